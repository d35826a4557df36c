// 16-bit intensities to display bytes.
#pragma once

#include "core/fixed_point.h"
#include "zox_volume.h"

namespace zox::ZOX_SET {
namespace {

struct Window {
  int lo, hi;  // the first and last value strictly inside
  int outmin, outmax;
  double slope, offset;

  uint8_t map(int v) const {
    if (v < lo) return static_cast<uint8_t>(outmin);
    if (v > hi) return static_cast<uint8_t>(outmax);
    return static_cast<uint8_t>(truncate(v * slope + offset));
  }
};

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

// 16 values at once. Values outside the window are replaced before they are mapped, so that the
// mapping needs no range of its own.
inline void map_16(const Window& window, const int16_t* src, uint8_t* dst) {
  alignas(64) double mapped[16];
  alignas(64) int inside[16];
  for (int i = 0; i < 16; ++i) mapped[i] = src[i] * window.slope + window.offset;
  truncate_lanes(mapped, inside, 16);
  for (int i = 0; i < 16; ++i) {
    int v = src[i];
    int out = v < window.lo ? window.outmin : inside[i];
    dst[i] = static_cast<uint8_t>(v > window.hi ? window.outmax : out);
  }
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
  if (len >= 16 && !overlap(src, dst, len)) {
    for (; i + 16 <= len; i += 16) map_16(window, src + i, dst + i);
  }
  for (; i < len; ++i) dst[i] = window.map(src[i]);
  return ZOX_STS_NO_ERROR;
}

}  // namespace
}  // namespace zox::ZOX_SET
