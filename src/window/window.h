// A window of intensities and what it maps them to.
#pragma once

#include "numbers/fixed_point.h"

namespace zox::ZOX_SET {
namespace {

struct Window {
  int lo, hi;  // the first and last value strictly inside
  int outmin, outmax;
  double slope, offset;

  // Chosen by masks, not branches: intensities do not come sorted. A mask is all ones exactly
  // where the value lies outside.
  int map(int v) const {
    int below = (v - lo) >> 16, above = (hi - v) >> 16;
    int mapped = truncate(v * slope + offset);
    return (below & outmin) | (above & outmax) | (~(below | above) & mapped);
  }
};

// Window::map() of eight values, in 16 bits, which hold lo, hi and all results.
inline __m128i map_8(const Window& w, __m128i v) {
  auto all = [](int value) { return _mm_set1_epi16(static_cast<int16_t>(value)); };
  __m128i below = _mm_cmpgt_epi16(all(w.lo), v), above = _mm_cmpgt_epi16(v, all(w.hi));
  __m128i outside = _mm_or_si128(_mm_and_si128(below, all(w.outmin)), _mm_and_si128(above, all(w.outmax)));
  __m128i inside = _mm_andnot_si128(_mm_or_si128(below, above), truncate_products(v, w.slope, w.offset));
  return _mm_or_si128(outside, inside);
}

// 16 values at once. src and dst do not overlap.
inline void map_16(const Window& window, const int16_t* src, uint8_t* dst) {
  __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
  __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 8));
  __m128i bytes = _mm_packus_epi16(map_8(window, low), map_8(window, high));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), bytes);
}

}  // namespace
}  // namespace zox::ZOX_SET
