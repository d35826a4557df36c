// The bounds that a program registered for its volumes through zox_volume_check.h.
#pragma once

#include <limits>

namespace zox_check {

// Numbers of voxels; where nothing is registered there is no bound.
struct Bounds {
  int columns = std::numeric_limits<int>::max();
  int rows = std::numeric_limits<int>::max();
  int depth = std::numeric_limits<int>::max();
};

// By the pointer in field 1 of the volume record.
Bounds registered_bounds(const void* volume_pointer);

}  // namespace zox_check
