// AVX-512 F, VL, BW and DQ: 16 lanes.
#pragma once

#include "sets/every.h"

namespace zox::ZOX_SET {
namespace {

constexpr int kVector = 16;
using Vector = NumbersOf<uint32_t, 4 * kVector>;
using Mask = __mmask16;

inline Mask equal(Vector a, Vector b) { return _mm512_cmpeq_epi32_mask(__m512i(a), __m512i(b)); }
inline unsigned bits_of(Mask m) { return m; }
inline Vector select(Mask m, Vector yes, Vector no) {
  return Vector(_mm512_mask_mov_epi32(__m512i(no), m, __m512i(yes)));
}
inline Vector add_where(Mask m, Vector a, Vector b) {
  return Vector(_mm512_mask_add_epi32(__m512i(a), m, __m512i(a), __m512i(b)));
}
// Lane i is what stands `by` lanes before it in `before` followed by v.
template <int by>
Vector lanes_before(Vector before, Vector v) {
  return Vector(_mm512_alignr_epi32(__m512i(v), __m512i(before), 16 - by));
}

struct Packing {
  Mask mask;
  explicit Packing(unsigned bits) : mask(static_cast<Mask>(bits)) {}
  void append(int* to, Vector v) const { store(to, _mm512_maskz_compress_epi32(mask, __m512i(v))); }
};

using Doubles = __m512d;
inline void store_truncated(int* to, Doubles v) { store(to, _mm512_cvttpd_epi32(v)); }

inline __m128i truncate_products(__m128i value, double slope, double offset) {
  __m256i out = _mm512_cvttpd_epi32(_mm512_cvtepi32_pd(_mm256_cvtepi16_epi32(value)) * slope + offset);
  return _mm_packs_epi32(_mm256_castsi256_si128(out), _mm256_extracti128_si256(out, 1));
}

}  // namespace
}  // namespace zox::ZOX_SET
