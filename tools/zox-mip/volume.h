// A volume as it was read: voxels in rows, x fastest, then y, then z.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>

#include "vec3.h"

namespace zox_mip {

enum class VoxelType { kBytes, kShorts };  // unsigned 8-bit, signed 16-bit

inline size_t voxel_bytes(VoxelType type) { return type == VoxelType::kBytes ? 1 : 2; }

// The library's fixed point holds coordinates below 2048 and the blocked layout has no more columns.
inline constexpr int kMaxSize = 2048;

struct Volume {
  std::array<int, 3> size{};
  // Millimetres per voxel step, in the patient's frame: +x left, +y posterior, +z superior. Where the
  // volume lies does not matter: pictures are taken around its middle.
  Axes axes{};
  VoxelType type = VoxelType::kShorts;
  std::unique_ptr<std::byte[]> voxels;
  // A value of the file is offset + scale * (the stored value); not 0 and 1 for floating point only.
  double scale = 1;
  double offset = 0;

  size_t count() const {
    return static_cast<size_t>(size[0]) * static_cast<size_t>(size[1]) * static_cast<size_t>(size[2]);
  }
};

// Reads any three-dimensional scalar image that ITK reads. Throws Failure.
Volume read_volume(const std::string& path);

// The built-in head: ellipsoids and a tube, in signed 16-bit; docs/zox-mip.md lists the shapes.
Volume make_phantom();

}  // namespace zox_mip
