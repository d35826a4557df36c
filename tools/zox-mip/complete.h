// Finding out that a file is cut short or damaged where ITK's readers pass over it in silence, or do not
// come back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace zox_mip {

// Whether a file is long enough for so many bytes of voxels, as far as that can be told before reading
// it. A reader would clear all the memory that a short header asks for.
bool can_hold(const std::string& path, uint64_t voxel_bytes);

// Whether the scanner coordinates of a NIfTI file are numbers of some use: ITK turns others into a
// matrix that it never gets done with, or ends the process.
bool is_nifti_sound(const std::string& path);

// Whether the header of a MetaImage names its voxels harmlessly: the reader hands a name with a % to
// printf as it stands.
bool is_meta_image_sound(const std::string& path);

// Whether a NIfTI (or Analyze) file holds as many bytes as its header promises. ITK fills up what is
// missing. Reads the whole file, through gzip if it is compressed.
bool is_nifti_complete(const std::string& path);

// Calls `read`, which is to fill `bytes` bytes at `buffer`, and says whether it got to the last voxel:
// some readers leave the end of the buffer as it is.
bool reads_to_the_end(const std::function<void()>& read, std::byte* buffer, size_t bytes, size_t voxel_bytes);

}  // namespace zox_mip
