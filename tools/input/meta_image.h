// MetaImage: .mha with the voxels behind the header, .mhd with a name for them.
#pragma once

#include "format.h"

namespace zox::input {

bool is_meta_image(const std::string& path);
std::vector<std::string> meta_image_files(const std::string& path);
Found read_meta_image(const std::string& path, const ReadOptions& options, VoxelMemory& memory);

}  // namespace zox::input
