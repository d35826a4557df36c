// Which values of a volume are shown, and their mapping to grey levels.
#pragma once

#include <cstdint>
#include <vector>

#include "options.h"
#include "volume.h"

namespace zox_mip {

// In stored values, as the library's window/level operation takes them.
struct StoredWindow {
  int center;
  int width;
};

// The window asked for, or one from percentiles of the voxels. Throws Failure if the window asked for
// cannot be had in 16 bits.
StoredWindow choose_window(const std::optional<Window>& wanted, const Volume& volume);

std::vector<uint8_t> apply_window(const StoredWindow& window, const std::vector<int16_t>& maxima);

}  // namespace zox_mip
