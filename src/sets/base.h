// SSE2, which every x86-64 has: 4 lanes.
#pragma once

#include "sets/every.h"

namespace zox::ZOX_SET {
namespace {

constexpr int kVector = 4;
using Vector = NumbersOf<uint32_t, 4 * kVector>;
using Mask = Vector;

inline Mask equal(Vector a, Vector b) { return Mask(a == b); }
inline unsigned bits_of(Mask m) { return static_cast<unsigned>(_mm_movemask_ps(__m128(m))); }
inline Vector select(Mask m, Vector yes, Vector no) { return (m & yes) | (~m & no); }
inline Vector add_where(Mask m, Vector a, Vector b) { return a + (m & b); }
template <int by>
Vector lanes_before(Vector before, Vector v) {
  return Vector(_mm_slli_si128(Sixteen(v), 4 * by)) | Vector(_mm_srli_si128(Sixteen(before), 16 - 4 * by));
}

// Lane by lane, unless all are wanted: SSE2 has no shuffle by a variable.
struct Packing {
  unsigned bits;
  explicit Packing(unsigned wanted) : bits(wanted) {}
  void append(int* to, Vector v) const {
    if (bits == 15) return store(to, v);
    for (int i = 0; i < 4; ++i) {
      store(to, v[i]);
      to += bits >> i & 1;
    }
  }
};

using Doubles = __m128d;
inline void store_truncated(int* to, Doubles v) {
  _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_cvttpd_epi32(v));
}

inline __m128i truncate_products(__m128i value, double slope, double offset) {
  auto two = [&](__m128i v) { return _mm_cvttpd_epi32(_mm_cvtepi32_pd(v) * slope + offset); };
  auto four = [&](__m128i v) { return _mm_unpacklo_epi64(two(v), two(_mm_unpackhi_epi64(v, v))); };
  __m128i low = _mm_srai_epi32(_mm_unpacklo_epi16(value, value), 16);
  __m128i high = _mm_srai_epi32(_mm_unpackhi_epi16(value, value), 16);
  return _mm_packs_epi32(four(low), four(high));
}

}  // namespace
}  // namespace zox::ZOX_SET
