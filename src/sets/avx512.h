// AVX-512 F, VL, BW and DQ: 16 lanes.
#pragma once

#include "sets/every.h"

namespace zox::ZOX_SET {
namespace {

constexpr int kVector = 16;
using Vector = __m512i;
using Mask = __mmask16;

inline Vector load_vector(const int* from) { return _mm512_load_si512(from); }
inline Vector load_anywhere(const int* from) { return _mm512_loadu_si512(from); }
inline void store_vector(int* to, Vector v) { _mm512_store_si512(to, v); }
inline void store_anywhere(int* to, Vector v) { _mm512_storeu_si512(to, v); }
inline Vector broadcast(int v) { return _mm512_set1_epi32(v); }
inline Mask equal(Vector a, Vector b) { return _mm512_cmpeq_epi32_mask(a, b); }
inline Mask both(Mask a, Mask b) { return a & b; }
inline unsigned bits_of(Mask m) { return m; }
inline Vector select(Mask m, Vector yes, Vector no) { return _mm512_mask_mov_epi32(no, m, yes); }
inline Vector sum(Vector a, Vector b) { return _mm512_add_epi32(a, b); }
inline Vector add_where(Mask m, Vector a, Vector b) { return _mm512_mask_add_epi32(a, m, a, b); }
template <int bits>
Vector shift_right(Vector v) {
  return _mm512_srai_epi32(v, bits);
}
inline Vector shift_right(Vector v, int bits) { return _mm512_sra_epi32(v, _mm_cvtsi32_si128(bits)); }
inline Vector bits_in(Vector v, Vector mask) { return _mm512_and_si512(v, mask); }
inline Vector product(Vector a, Vector b) { return _mm512_mullo_epi32(a, b); }
inline Vector smaller(Vector a, Vector b) { return _mm512_min_epi32(a, b); }
// Lane i is what stands `by` lanes before it in `before` followed by v.
template <int by>
Vector lanes_before(Vector before, Vector v) {
  return _mm512_alignr_epi32(v, before, 16 - by);
}
inline int lowest_of(Vector v) { return _mm512_reduce_min_epi32(v); }

struct Packing {
  Mask mask;
  explicit Packing(unsigned bits) : mask(static_cast<Mask>(bits)) {}
  void append(int* to, Vector v) const { store_anywhere(to, _mm512_maskz_compress_epi32(mask, v)); }
};

template <>
struct SampleVector<64> {
  __m512i v;
  static SampleVector load(const void* from) { return {_mm512_loadu_si512(from)}; }
  void store(void* to) const { _mm512_storeu_si512(to, v); }
  static SampleVector all(uint8_t value) { return {_mm512_set1_epi8(static_cast<char>(value))}; }
  static SampleVector all(int16_t value) { return {_mm512_set1_epi16(value)}; }
};

inline __m512i larger_of(uint8_t, __m512i a, __m512i b) { return _mm512_max_epu8(a, b); }
inline __m512i larger_of(int16_t, __m512i a, __m512i b) { return _mm512_max_epi16(a, b); }
inline __mmask64 above(uint8_t, __m512i a, __m512i b) { return _mm512_cmpgt_epi8_mask(a, b); }
inline __mmask32 above(int16_t, __m512i a, __m512i b) { return _mm512_cmpgt_epi16_mask(a, b); }
inline __m512i where(__mmask64 on, __m512i yes, __m512i no) { return _mm512_mask_mov_epi8(no, on, yes); }
inline __m512i where(__mmask32 on, __m512i yes, __m512i no) { return _mm512_mask_mov_epi16(no, on, yes); }

inline void store_32(void* to, Sixteen a, Sixteen b) {
  _mm256_storeu_si256(static_cast<__m256i*>(to), _mm256_set_m128i(b, a));
}
inline void store_64(void* to, Sixteen a, Sixteen b, Sixteen c, Sixteen d) {
  const __m512i low = _mm512_castsi256_si512(_mm256_set_m128i(b, a));
  _mm512_storeu_si512(to, _mm512_inserti64x4(low, _mm256_set_m128i(d, c), 1));
}

constexpr int kDoubles = 8;
inline void truncate_vector(const double* from, int* to) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), _mm512_cvttpd_epi32(_mm512_loadu_pd(from)));
}

inline __m128i truncate_products(__m128i value, double slope, double offset) {
  __m512d real = _mm512_cvtepi32_pd(_mm256_cvtepi16_epi32(value));
  __m256i out =
      _mm512_cvttpd_epi32(_mm512_add_pd(_mm512_mul_pd(real, _mm512_set1_pd(slope)), _mm512_set1_pd(offset)));
  return _mm_packs_epi32(_mm256_castsi256_si128(out), _mm256_extracti128_si256(out, 1));
}

}  // namespace
}  // namespace zox::ZOX_SET
