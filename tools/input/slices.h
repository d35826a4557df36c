// Volumes whose slices are files of their own in a folder: TIFF or NRRD.
#pragma once

#include "format.h"

namespace zox::input {

bool is_slice_folder(const std::string& path);
std::vector<std::string> slice_folder_files(const std::string& path);
Found read_slices(const std::string& path, const ReadOptions& options, VoxelMemory& memory);
void read_slices_block(const std::string& path, const ReadOptions& options, const zox_render_array& whole,
                       const Block& block, std::byte* out);

}  // namespace zox::input
