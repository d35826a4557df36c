// Passes over a caller's array: its range, and its rows as samples.
#pragma once

#include "cast/work.h"
#include "volume/array.h"
#include "volume/storage.h"

namespace render {

struct Range {
  double lowest, highest;  // stored voxels, of the finite ones
};

// Rejects an array without any finite voxel.
Range find_range(const Array& array, Work& work, double share);

// Writes row y of slice z as samples. What is not finite becomes the lowest.
void sample_row(const Array& array, const Storage& storage, int y, int z, int16_t* samples);

}  // namespace render
