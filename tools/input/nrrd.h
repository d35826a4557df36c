// NRRD: a header of text lines, voxels behind it or in files that it names.
#pragma once

#include "format.h"
#include "slice.h"

namespace zox::input {

bool is_nrrd(const std::string& path);
std::vector<std::string> nrrd_files(const std::string& path);
Found read_nrrd(const std::string& path, const ReadOptions& options, VoxelMemory& memory);

// A file of one picture, as a slice of a volume, and its rows first .. first + count - 1.
Slice describe_nrrd_slice(const std::string& path);
void read_nrrd_rows(const Slice& slice, int32_t first, int32_t count, std::byte* out);

}  // namespace zox::input
