// HDF5: a dataset of three dimensions, slices first. Its library is loaded when a file needs it.
#pragma once

#include "format.h"

namespace zox::input {

bool is_hdf5(const std::string& path);
Found read_hdf5(const std::string& path, const ReadOptions& options, VoxelMemory& memory);
void read_hdf5_block(const std::string& path, const ReadOptions& options, const zox_render_array& whole,
                     const Block& block, std::byte* out);

}  // namespace zox::input
