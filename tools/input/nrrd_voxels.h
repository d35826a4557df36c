// Where the voxels of an NRRD file lie, and as what.
#pragma once

#include "header_lines.h"
#include "voxels.h"

namespace zox::input {

// The fields of the header.
HeaderLines read_nrrd_header(const std::string& path);

// The files that hold the voxels, the one of the header where no other is named.
std::vector<std::string> nrrd_voxel_files(const HeaderLines& lines);

// All voxels, `total` in number, and which lines and bytes to leave out before them.
VoxelSource nrrd_voxels(const HeaderLines& lines, uint64_t total);

}  // namespace zox::input
