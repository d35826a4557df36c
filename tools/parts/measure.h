// What must be known of a whole volume before its parts can be rendered alike.
#pragma once

#include <limits>
#include <vector>

#include "source.h"

namespace zox::parts {

struct Measure {
  // The smallest and largest stored voxel; infinite where there is no finite one.
  double lowest = std::numeric_limits<double>::infinity();
  double highest = -std::numeric_limits<double>::infinity();
  // Of every slice: how many of its tiles of 16 x 16 voxels reach above the middle of the range seen up to
  // that slice. It stands for the samples that skipping will not leave out; pictures do not depend on it.
  std::vector<double> slice_weights;
};

// Slices first .. first + count - 1; the weights of all others are 0. Takes as many slices at a time as
// `most_bytes` hold, and one at least.
Measure measure(const Source& source, int32_t first, int32_t count, uint64_t most_bytes = 64 << 20);

}  // namespace zox::parts
