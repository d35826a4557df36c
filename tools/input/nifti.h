// NIfTI and Analyze 7.5: one file, or a pair x.hdr and x.img; each may be packed by gzip.
#pragma once

#include "format.h"

namespace zox::input {

bool is_nifti(const std::string& path);
std::vector<std::string> nifti_files(const std::string& path);
Found read_nifti(const std::string& path, const ReadOptions& options, VoxelMemory& memory);

}  // namespace zox::input
