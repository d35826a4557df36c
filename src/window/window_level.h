// 16-bit intensities to display bytes.
#pragma once

#include "numbers/fixed_point.h"
#include "zox_volume.h"

namespace zox::ZOX_SET {
namespace {

// A window of intensities and what it maps them to.
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
inline Sixteen map_8(const Window& w, const int16_t* src) {
  using Eight = NumbersOf<int16_t, 16>;
  auto all = [](int value) { return Eight{} + static_cast<int16_t>(value); };
  const Eight v = load<Eight>(src), inside = Eight(truncate_products(Sixteen(v), w.slope, w.offset));
  return Sixteen(v < all(w.lo) ? all(w.outmin) : v > all(w.hi) ? all(w.outmax) : inside);
}

// 16 values at once. src and dst do not overlap.
inline void map_16(const Window& window, const int16_t* src, uint8_t* dst) {
  store(dst, packed_bytes(map_8(window, src), map_8(window, src + 8)));
}

// 4 to 15 values at once: those in the middle twice. src and dst do not overlap.
inline void map_few(const Window& window, const int16_t* src, uint8_t* dst, int n) {
  alignas(16) int16_t words[8];
  alignas(16) uint8_t bytes[16];
  if (n >= 8) {
    store(bytes, packed_bytes(map_8(window, src), map_8(window, src + n - 8)));
    __builtin_memcpy(dst, bytes, 8);
    __builtin_memcpy(dst + n - 8, bytes + 8, 8);
  } else {
    __builtin_memcpy(words, src, 8);
    __builtin_memcpy(words + 4, src + n - 4, 8);
    const Sixteen mapped = map_8(window, words);
    store(bytes, packed_bytes(mapped, mapped));
    __builtin_memcpy(dst, bytes, 4);
    __builtin_memcpy(dst + n - 4, bytes + 4, 4);
  }
}

// Only the low bits of the arguments count, so they are narrowed first. False for a window or
// an output range that is not one.
inline bool make_window(int center, int width, int outmin, int outmax, Window& window) {
  int c = static_cast<int16_t>(center), w = static_cast<int16_t>(width);
  window.outmin = static_cast<uint8_t>(outmin);
  window.outmax = static_cast<uint8_t>(outmax);
  if (w <= 0 || window.outmax < window.outmin) return false;
  window.lo = ((2 * c - w) >> 1) + 1;
  window.hi = ((2 * c + w) >> 1) - 1;
  if (window.lo < INT16_MIN || window.hi > INT16_MAX || window.lo > window.hi) return false;
  window.slope = static_cast<double>(window.outmax - window.outmin) / w;
  window.offset = window.outmin - (c - 0.5 * w) * window.slope;
  return true;
}

inline bool overlap(const int16_t* src, const uint8_t* dst, int len) {
  uintptr_t s = reinterpret_cast<uintptr_t>(src), d = reinterpret_cast<uintptr_t>(dst);
  uintptr_t n = static_cast<uintptr_t>(len);
  return d < s + 2 * n && s < d + n;
}

inline int window_level(const int16_t* src, uint8_t* dst, int len, int center, int width, int outmin,
                        int outmax) {
  Window window;
  if (!make_window(center, width, outmin, outmax, window)) return ZOX_STS_BAD_PARAM;
  int i = 0;
  // Buffers that overlap are converted in order, one by one, which makes conversion in place work.
  if (len >= 4 && !overlap(src, dst, len)) {
    for (; len - i >= 16; i += 16) map_16(window, src + i, dst + i);
    if (len - i >= 4) {
      map_few(window, src + i, dst + i, len - i);
      i = len;
    }
  }
  for (; i < len; ++i) dst[i] = static_cast<uint8_t>(window.map(src[i]));
  return ZOX_STS_NO_ERROR;
}

}  // namespace
}  // namespace zox::ZOX_SET
