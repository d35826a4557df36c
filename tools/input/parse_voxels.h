// Voxels written as text.
#pragma once

#include "inflate.h"
#include "voxels.h"

namespace zox::input {

// Fills `out` with the wanted voxels of `text`, which begins with the first of all. False when there
// are too few or something else than numbers of the voxels' type.
bool parse_voxels(const VoxelSource& source, Bytes text, std::byte* out);

}  // namespace zox::input
