// A caller's array of voxels, checked, and its rows one after the other.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "failure.h"
#include "interface.h"

namespace render {

using Size3 = std::array<int, 3>;

// The fixed-point positions of the sampling operations hold coordinates below this.
inline constexpr int kMaxSize = 2048;

struct Array {
  int type = 0;
  Size3 size{};
  std::vector<const std::byte*> slices;  // the address of voxel (0, 0) of each
  int64_t column_bytes = 0, row_bytes = 0;
  double slope = 1, intercept = 0;
  // A part of a whole: where it lies, and which samples are its own. The whole: all of it.
  Size3 whole{}, first{}, owned_first{}, owned_size{};
  // The smallest and largest stored voxel of the whole, where the caller told them.
  bool range_given = false;
  double lowest = 0, highest = 0;

  const std::byte* row(int y, int z) const { return slices[static_cast<size_t>(z)] + y * row_bytes; }
  int64_t count() const { return int64_t{size[0]} * size[1] * size[2]; }
};

// Checks everything but the axes and positions, which are the frame's.
Array checked_array(const zox_render_array& record);

size_t voxel_bytes(int type);
bool is_float(int type);
bool is_byte(int type);

// Calls use(pointer) with a null pointer of the C++ type of a voxel.
template <class Use>
decltype(auto) with_type(int type, Use use) {
  switch (type) {
    case ZOX_RENDER_UINT8:
      return use(static_cast<const uint8_t*>(nullptr));
    case ZOX_RENDER_INT8:
      return use(static_cast<const int8_t*>(nullptr));
    case ZOX_RENDER_INT16:
      return use(static_cast<const int16_t*>(nullptr));
    case ZOX_RENDER_UINT16:
      return use(static_cast<const uint16_t*>(nullptr));
    case ZOX_RENDER_INT32:
      return use(static_cast<const int32_t*>(nullptr));
    case ZOX_RENDER_UINT32:
      return use(static_cast<const uint32_t*>(nullptr));
    case ZOX_RENDER_FLOAT32:
      return use(static_cast<const float*>(nullptr));
    case ZOX_RENDER_FLOAT64:
      return use(static_cast<const double*>(nullptr));
    default:
      reject("The type of the array is none of the types of voxels.");
  }
}

}  // namespace render
