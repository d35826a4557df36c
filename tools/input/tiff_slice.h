// TIFF files of one picture each, as slices of a volume.
#pragma once

#include "slice.h"

namespace zox::input {

Slice describe_tiff_slice(const std::string& path);
// Rows first .. first + count - 1, whole.
void read_tiff_rows(const Slice& slice, int32_t first, int32_t count, std::byte* out);

}  // namespace zox::input
