// AVX2: 8 lanes.
#pragma once

#include "sets/every.h"

namespace zox::ZOX_SET {
namespace {

constexpr int kVector = 8;
using Vector = __m256i;
using Mask = __m256i;

inline Vector load_vector(const int* from) {
  return _mm256_load_si256(reinterpret_cast<const __m256i*>(from));
}
inline Vector load_anywhere(const int* from) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}
inline void store_vector(int* to, Vector v) { _mm256_store_si256(reinterpret_cast<__m256i*>(to), v); }
inline void store_anywhere(int* to, Vector v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), v); }
inline Vector broadcast(int v) { return _mm256_set1_epi32(v); }
inline Mask equal(Vector a, Vector b) { return _mm256_cmpeq_epi32(a, b); }
inline Mask both(Mask a, Mask b) { return _mm256_and_si256(a, b); }
inline unsigned bits_of(Mask m) { return static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(m))); }
inline Vector select(Mask m, Vector yes, Vector no) { return _mm256_blendv_epi8(no, yes, m); }
inline Vector sum(Vector a, Vector b) { return _mm256_add_epi32(a, b); }
inline Vector add_where(Mask m, Vector a, Vector b) { return _mm256_add_epi32(a, _mm256_and_si256(m, b)); }
template <int bits>
Vector shift_right(Vector v) {
  return _mm256_srai_epi32(v, bits);
}
inline Vector shift_right(Vector v, int bits) { return _mm256_sra_epi32(v, _mm_cvtsi32_si128(bits)); }
inline Vector bits_in(Vector v, Vector mask) { return _mm256_and_si256(v, mask); }
inline Vector product(Vector a, Vector b) { return _mm256_mullo_epi32(a, b); }
inline Vector smaller(Vector a, Vector b) { return _mm256_min_epi32(a, b); }
template <int by>
Vector lanes_before(Vector before, Vector v) {
  if constexpr (by == kVector) return before;
  return _mm256_alignr_epi8(v, _mm256_permute2x128_si256(before, v, 0x21), (16 - 4 * by) & 15);
}
inline int lowest_of(Vector v) {
  __m128i low = _mm_min_epi32(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
  low = _mm_min_epi32(low, _mm_shuffle_epi32(low, 0x4E));
  low = _mm_min_epi32(low, _mm_shuffle_epi32(low, 0xB1));
  return _mm_cvtsi128_si32(low);
}

// For each set of 8 lanes, their numbers moved together.
struct PackingTable {
  alignas(8) uint8_t order[256][8] = {};
  constexpr PackingTable() {
    for (int mask = 0; mask < 256; ++mask) {
      for (int lane = 0, n = 0; lane < 8; ++lane) {
        if (mask >> lane & 1) order[mask][n++] = static_cast<uint8_t>(lane);
      }
    }
  }
};
constexpr PackingTable kPackingTable;

struct Packing {
  __m256i order;
  explicit Packing(unsigned bits)
      : order(_mm256_cvtepu8_epi32(
            _mm_loadl_epi64(reinterpret_cast<const __m128i*>(kPackingTable.order[bits])))) {}
  void append(int* to, Vector v) const { store_anywhere(to, _mm256_permutevar8x32_epi32(v, order)); }
};

template <>
struct SampleVector<32> {
  __m256i v;
  static SampleVector load(const void* from) {
    return {_mm256_loadu_si256(static_cast<const __m256i*>(from))};
  }
  void store(void* to) const { _mm256_storeu_si256(static_cast<__m256i*>(to), v); }
  static SampleVector all(uint8_t value) { return {_mm256_set1_epi8(static_cast<char>(value))}; }
  static SampleVector all(int16_t value) { return {_mm256_set1_epi16(value)}; }
};

inline __m256i larger_of(uint8_t, __m256i a, __m256i b) { return _mm256_max_epu8(a, b); }
inline __m256i larger_of(int16_t, __m256i a, __m256i b) { return _mm256_max_epi16(a, b); }
inline __m256i above(uint8_t, __m256i a, __m256i b) { return _mm256_cmpgt_epi8(a, b); }
inline __m256i above(int16_t, __m256i a, __m256i b) { return _mm256_cmpgt_epi16(a, b); }
inline __m256i where(__m256i on, __m256i yes, __m256i no) { return _mm256_blendv_epi8(no, yes, on); }

inline void store_32(void* to, Sixteen a, Sixteen b) {
  _mm256_storeu_si256(static_cast<__m256i*>(to), _mm256_set_m128i(b, a));
}
inline void store_64(void* to, Sixteen a, Sixteen b, Sixteen c, Sixteen d) {
  store_32(to, a, b);
  store_32(static_cast<char*>(to) + 32, c, d);
}

constexpr int kDoubles = 4;
inline void truncate_vector(const double* from, int* to) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm256_cvttpd_epi32(_mm256_loadu_pd(from)));
}

inline __m128i truncate_products(__m128i value, double slope, double offset) {
  auto four = [&](__m128i v) {
    __m256d real = _mm256_cvtepi32_pd(_mm_cvtepi16_epi32(v));
    return _mm256_cvttpd_epi32(
        _mm256_add_pd(_mm256_mul_pd(real, _mm256_set1_pd(slope)), _mm256_set1_pd(offset)));
  };
  return _mm_packs_epi32(four(value), four(_mm_unpackhi_epi64(value, value)));
}

}  // namespace
}  // namespace zox::ZOX_SET
