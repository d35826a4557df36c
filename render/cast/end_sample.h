// The samples that the operations cannot take, since they would read beyond the last voxel.
#pragma once

#include <algorithm>
#include <array>

#include "view/rays.h"
#include "volume/volume.h"

namespace render {

// Trilinear, with what lies beyond the last voxel having no weight: the value that the operations would give.
inline int end_sample(const Volume& volume, const std::array<double, 3>& position) {
  int low[3], high[3];
  double share[3];
  for (size_t a = 0; a < 3; ++a) {
    const double local = position[a] * (1 / kGrid) - volume.first[a];
    low[a] = static_cast<int>(local);
    high[a] = std::min(low[a] + 1, volume.size[a] - 1);
    share[a] = local - low[a];
  }
  const auto across = [&](int y, int z) {
    const double left = volume.sample(low[0], y, z);
    return left + (volume.sample(high[0], y, z) - left) * share[0];
  };
  const auto along = [&](int z) {
    const double back = across(low[1], z);
    return back + (across(high[1], z) - back) * share[1];
  };
  const double below = along(low[2]);
  const double value = below + (along(high[2]) - below) * share[2];
  // Stacks are cut toward zero, bricks rounded to the nearest.
  return static_cast<int>(volume.layout == Layout::kStack ? value : std::floor(value + 0.5));
}

}  // namespace render
