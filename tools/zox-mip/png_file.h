// Writing the picture.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zox_mip {

// Writes an 8-bit grey PNG under a temporary name beside `path` and renames it, so that `path` holds
// either what it held or the whole picture. Throws Failure.
void write_png(const std::string& path, int width, int height, const std::vector<uint8_t>& grey);

}  // namespace zox_mip
