// NRRD: a header of text lines, voxels behind it or in files that it names.
#pragma once

#include "format.h"

namespace zox::input {

bool is_nrrd(const std::string& path);
std::vector<std::string> nrrd_files(const std::string& path);
Found read_nrrd(const std::string& path, const ReadOptions& options, SharedMemory& memory);

}  // namespace zox::input
