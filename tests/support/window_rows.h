// The family of the window/level mapping: windows and rows of values worth mapping.
#pragma once

#include <cstdint>
#include <utility>

#include "random.h"

namespace zox_test {

using Mapping = int (*)(const int16_t*, uint8_t*, int, int, int, int, int);

struct Window {
  int center, width, outmin, outmax;
};

// Mostly a window that is accepted; the bits above the narrow values mean nothing.
inline Window draw_window(Random& random) {
  const int width =
      random.pick({2, 3, random.whole(2, 20), random.whole(2, 3000), random.whole(-32768, 32767)});
  const int center =
      random.pick({0, random.whole(-100, 100), random.whole(-15000, 15000), random.whole(-32768, 32767)});
  int low = random.pick({0, 0, random.whole(0, 255)}), high = random.pick({255, 255, random.whole(0, 255)});
  if (low > high && random.chance(0.8)) std::swap(low, high);
  Window window{center, width, low, high};
  if (random.chance(0.5)) {
    const auto with_garbage = [&](int value, int bits) {
      const uint32_t mask = (1u << bits) - 1;
      return static_cast<int>((static_cast<uint32_t>(value) & mask) |
                              (static_cast<uint32_t>(random.bits()) & ~mask));
    };
    window = {with_garbage(center, 16), with_garbage(width, 16), with_garbage(low, 8), with_garbage(high, 8)};
  }
  return window;
}

// Values of any kind, among them those at the window's edges and middle.
inline void fill_row(int16_t* row, int count, const Window& window, Random& random) {
  const int shape = random.whole(0, 2);
  const int center = static_cast<int16_t>(window.center), width = static_cast<int16_t>(window.width);
  for (int i = 0; i < count; ++i) {
    int value = static_cast<int16_t>(random.bits());
    if (shape == 1) value = random.pick({-32768, 32767, 0, -1});
    // At, and one to either side of, the window's edges and middle.
    if (shape == 2) value = center + random.pick({-1, 0, 1}) * (width / 2) + random.whole(-2, 2);
    row[i] = static_cast<int16_t>(value);
  }
}

}  // namespace zox_test
