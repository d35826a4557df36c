// SSE2, which every x86-64 has: 4 lanes.
#pragma once

#include "sets/every.h"

namespace zox::ZOX_SET {
namespace {

constexpr int kVector = 4;
using Vector = __m128i;
using Mask = __m128i;

inline Vector load_vector(const int* from) { return _mm_load_si128(reinterpret_cast<const __m128i*>(from)); }
inline Vector load_anywhere(const int* from) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}
inline void store_vector(int* to, Vector v) { _mm_store_si128(reinterpret_cast<__m128i*>(to), v); }
inline void store_anywhere(int* to, Vector v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), v); }
inline Vector broadcast(int v) { return _mm_set1_epi32(v); }
inline Mask equal(Vector a, Vector b) { return _mm_cmpeq_epi32(a, b); }
inline Mask both(Mask a, Mask b) { return _mm_and_si128(a, b); }
inline unsigned bits_of(Mask m) { return static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(m))); }
inline Vector select(Mask m, Vector yes, Vector no) {
  return _mm_or_si128(_mm_and_si128(m, yes), _mm_andnot_si128(m, no));
}
inline Vector sum(Vector a, Vector b) { return _mm_add_epi32(a, b); }
inline Vector add_where(Mask m, Vector a, Vector b) { return _mm_add_epi32(a, _mm_and_si128(m, b)); }
template <int bits>
Vector shift_right(Vector v) {
  return _mm_srai_epi32(v, bits);
}
inline Vector shift_right(Vector v, int bits) { return _mm_sra_epi32(v, _mm_cvtsi32_si128(bits)); }
inline Vector bits_in(Vector v, Vector mask) { return _mm_and_si128(v, mask); }
inline Vector product(Vector a, Vector b) {
  __m128i even = _mm_mul_epu32(a, b), odd = _mm_mul_epu32(_mm_srli_epi64(a, 32), _mm_srli_epi64(b, 32));
  return _mm_unpacklo_epi32(_mm_shuffle_epi32(even, 0x08), _mm_shuffle_epi32(odd, 0x08));
}
inline Vector smaller(Vector a, Vector b) { return select(_mm_cmplt_epi32(a, b), a, b); }
template <int by>
Vector lanes_before(Vector before, Vector v) {
  return _mm_or_si128(_mm_slli_si128(v, 4 * by), _mm_srli_si128(before, 16 - 4 * by));
}
inline int lowest_of(Vector v) {
  v = smaller(v, _mm_shuffle_epi32(v, 0x4E));
  v = smaller(v, _mm_shuffle_epi32(v, 0xB1));
  return _mm_cvtsi128_si32(v);
}

// Lane by lane, unless all are wanted: SSE2 has no shuffle by a variable.
struct Packing {
  unsigned bits;
  explicit Packing(unsigned wanted) : bits(wanted) {}
  void append(int* to, Vector v) const {
    if (bits == 15) return store_anywhere(to, v);
    alignas(16) int lane[4];
    store_vector(lane, v);
    for (int i = 0; i < 4; ++i) {
      *to = lane[i];
      to += bits >> i & 1;
    }
  }
};

inline void store_32(void* to, Sixteen a, Sixteen b) {
  store_16(to, a);
  store_16(static_cast<char*>(to) + 16, b);
}
inline void store_64(void* to, Sixteen a, Sixteen b, Sixteen c, Sixteen d) {
  store_32(to, a, b);
  store_32(static_cast<char*>(to) + 32, c, d);
}

constexpr int kDoubles = 2;
inline void truncate_vector(const double* from, int* to) {
  _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_cvttpd_epi32(_mm_loadu_pd(from)));
}

inline __m128i truncate_products(__m128i value, double slope, double offset) {
  auto two = [&](__m128i v) {
    return _mm_cvttpd_epi32(
        _mm_add_pd(_mm_mul_pd(_mm_cvtepi32_pd(v), _mm_set1_pd(slope)), _mm_set1_pd(offset)));
  };
  auto four = [&](__m128i v) { return _mm_unpacklo_epi64(two(v), two(_mm_unpackhi_epi64(v, v))); };
  __m128i low = _mm_srai_epi32(_mm_unpacklo_epi16(value, value), 16);
  __m128i high = _mm_srai_epi32(_mm_unpackhi_epi16(value, value), 16);
  return _mm_packs_epi32(four(low), four(high));
}

}  // namespace
}  // namespace zox::ZOX_SET
