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

// 4 to 15 values at once: those in the middle twice. src and dst do not overlap.
inline void map_few(const Window& window, const int16_t* src, uint8_t* dst, int n) {
  alignas(16) int16_t words[8];
  alignas(16) uint8_t bytes[16];
  if (n >= 8) {
    store_16(bytes, packed_bytes(map_8(window, load_16(src)), map_8(window, load_16(src + n - 8))));
    __builtin_memcpy(dst, bytes, 8);
    __builtin_memcpy(dst + n - 8, bytes + 8, 8);
  } else {
    __builtin_memcpy(words, src, 8);
    __builtin_memcpy(words + 4, src + n - 4, 8);
    const Sixteen mapped = map_8(window, load_16(words));
    store_16(bytes, packed_bytes(mapped, mapped));
    __builtin_memcpy(dst, bytes, 4);
    __builtin_memcpy(dst + n - 4, bytes + 4, 4);
  }
}

}  // namespace
}  // namespace zox::ZOX_SET
