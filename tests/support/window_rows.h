// The family of the window/level mapping: windows and rows of values worth mapping.
#pragma once

#include <cstdint>

#include "random.h"

namespace zox_test {

using Mapping = int (*)(const int16_t*, uint8_t*, int, int, int, int, int);

struct Window {
  int center, width, outmin, outmax;
};

// Mostly a window that is accepted; the bits above the narrow values mean nothing.
Window draw_window(Random& random);

// Values of any kind, among them those at the window's edges and middle.
void fill_row(int16_t* row, int count, const Window& window, Random& random);

}  // namespace zox_test
