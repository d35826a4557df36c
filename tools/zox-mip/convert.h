// From the voxel types of files to the two that the library samples.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "volume.h"

namespace zox_mip {

enum class FileType { kU8, kS8, kU16, kS16, kU32, kS32, kU64, kS64, kF32, kF64 };

size_t file_type_bytes(FileType type);

// Takes `raw` (volume.count() values of the given type) into volume.voxels and sets type, scale and
// offset. Unsigned bytes stay; other integers become signed 16-bit and must fit; floating-point values
// are spread over 0 .. 32767, values that are not finite becoming the lowest. Throws Failure, naming
// the volume `name`.
void store_voxels(std::unique_ptr<std::byte[]> raw, FileType type, const std::string& name, Volume& volume);

}  // namespace zox_mip
