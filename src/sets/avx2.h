// AVX2: 8 lanes.
#pragma once

#include "sets/every.h"

namespace zox::ZOX_SET {
namespace {

constexpr int kVector = 8;
using Vector = NumbersOf<uint32_t, 4 * kVector>;
using Mask = Vector;

inline Mask equal(Vector a, Vector b) { return Mask(a == b); }
inline unsigned bits_of(Mask m) { return static_cast<unsigned>(_mm256_movemask_ps(__m256(m))); }
inline Vector select(Mask m, Vector yes, Vector no) {
  return Vector(_mm256_blendv_epi8(__m256i(no), __m256i(yes), __m256i(m)));
}
inline Vector add_where(Mask m, Vector a, Vector b) { return a + (m & b); }
template <int by>
Vector lanes_before(Vector before, Vector v) {
  if constexpr (by == kVector) return before;
  const __m256i middle = _mm256_permute2x128_si256(__m256i(before), __m256i(v), 0x21);
  return Vector(_mm256_alignr_epi8(__m256i(v), middle, (16 - 4 * by) & 15));
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
  void append(int* to, Vector v) const { store(to, _mm256_permutevar8x32_epi32(__m256i(v), order)); }
};

using Doubles = __m256d;
inline void store_truncated(int* to, Doubles v) { store(to, _mm256_cvttpd_epi32(v)); }

inline __m128i truncate_products(__m128i value, double slope, double offset) {
  auto four = [&](__m128i v) {
    return _mm256_cvttpd_epi32(_mm256_cvtepi32_pd(_mm_cvtepi16_epi32(v)) * slope + offset);
  };
  return _mm_packs_epi32(four(value), four(_mm_unpackhi_epi64(value, value)));
}

}  // namespace
}  // namespace zox::ZOX_SET
