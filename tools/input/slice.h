// A file that holds one slice of a volume.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "voxels.h"

namespace zox::input {

struct Slice {
  std::string path;
  int32_t columns = 0, rows = 0;
  Stored type = Stored::kU8;
  // From a voxel to the next of a row, of a column and of the next slice, as far as the file says.
  std::optional<std::array<double, 3>> axes[3];
  std::optional<std::array<double, 3>> origin;  // in space
  VoxelSource source;                           // of NRRD
};

}  // namespace zox::input
