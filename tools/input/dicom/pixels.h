// The pixels of DICOM files, decompressed and brought to one plain type.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "dicom_frame.h"

namespace zox::input::dicom {

// The type in which the slices of a volume are kept, one of zox_render.h's.
struct VoxelType {
  int render_type;
  size_t bytes;
  double slope, intercept;  // from a kept voxel to its value
};

// Slices whose rescaling differs are kept as values in floating point, all others as they are stored.
VoxelType common_type(const std::vector<Frame>& frames);

// Decodes the frames of one file. Throws std::runtime_error: the end of a sentence that begins with
// the file's name.
class PixelFile {
 public:
  explicit PixelFile(const Frame& any_frame);
  // Writes columns x rows voxels of the type, row after row.
  void copy(const Frame& frame, const VoxelType& type, std::byte* voxels) const;

 private:
  std::vector<char> buffer_;
};

}  // namespace zox::input::dicom
