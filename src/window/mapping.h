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
inline Sixteen map_8(const Window& w, Sixteen v) {
  auto all = [](int value) { return SampleVector<16>::all(static_cast<int16_t>(value)).v; };
  Sixteen below = above(int16_t{}, all(w.lo), v), beyond = above(int16_t{}, v, all(w.hi));
  Sixteen inside = truncate_products(v, w.slope, w.offset);
  return where(below, all(w.outmin), where(beyond, all(w.outmax), inside));
}

// 16 values at once. src and dst do not overlap.
inline void map_16(const Window& window, const int16_t* src, uint8_t* dst) {
  store_16(dst, packed_bytes(map_8(window, load_16(src)), map_8(window, load_16(src + 8))));
}

}  // namespace
}  // namespace zox::ZOX_SET
