// 16-bit intensities to display bytes.
#pragma once

#include "window/mapping.h"
#include "zox_volume.h"

namespace zox::ZOX_SET {
namespace {

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
