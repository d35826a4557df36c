#include "volume/array.h"

#include <cmath>
#include <limits>
#include <type_traits>

namespace render {
namespace {

void check_size(const int32_t (&size)[3]) {
  for (const int32_t extent : size)
    if (extent < 1 || extent > kMaxSize)
      reject("The size of the array must be 1 to 2048 voxels along each axis, not " + std::to_string(extent) +
             ".");
}

void take_addresses(const zox_render_array& record, Array& array) {
  require(!record.data != !record.slices, "The array needs either data or slices, and not both.");
  const int64_t bytes = static_cast<int64_t>(voxel_bytes(record.type));
  array.column_bytes = record.strides[0];
  array.row_bytes = record.strides[1];
  int64_t slice_bytes = record.strides[2];
  // slices are at addresses of their own, so that the third stride says nothing then.
  const bool packed = !record.strides[0] && !record.strides[1] && (record.slices || !record.strides[2]);
  if (packed) {
    array.column_bytes = bytes;
    array.row_bytes = bytes * record.size[0];
    slice_bytes = array.row_bytes * record.size[1];
  }
  for (int z = 0; z < record.size[2]; ++z) {
    const void* slice =
        record.slices ? record.slices[z] : static_cast<const std::byte*>(record.data) + z * slice_bytes;
    require(slice != nullptr, "The address of a slice is null.");
    array.slices.push_back(static_cast<const std::byte*>(slice));
  }
}

bool all_zero(const int32_t (&v)[3]) { return !v[0] && !v[1] && !v[2]; }

void take_part(const zox_render_array& record, Array& array) {
  array.whole = array.size;
  array.owned_size = array.size;
  if (all_zero(record.whole_size)) {
    require(all_zero(record.first) && all_zero(record.owned_first) && all_zero(record.owned_size),
            "first, owned_first and owned_size are given, but not whole_size.");
    return;
  }
  for (size_t a = 0; a < 3; ++a) {
    const int64_t whole = record.whole_size[a], first = record.first[a];
    const int64_t owned = record.owned_first[a], owned_size = record.owned_size[a];
    require(whole >= 1 && whole <= kMaxSize * int64_t{kMaxSize},
            "whole_size must be 1 to 4194304 voxels along each axis.");
    require(first >= 0 && first + array.size[a] <= whole, "The part does not lie within whole_size.");
    require(owned_size >= 1 && owned >= first && owned + owned_size <= first + array.size[a],
            "The owned voxels do not lie within the part.");
    array.whole[a] = record.whole_size[a];
    array.first[a] = record.first[a];
    array.owned_first[a] = record.owned_first[a];
    array.owned_size[a] = record.owned_size[a];
  }
}

}  // namespace

size_t voxel_bytes(int type) {
  return with_type(type, [](auto* voxel) { return sizeof(*voxel); });
}

bool is_float(int type) { return type == ZOX_RENDER_FLOAT32 || type == ZOX_RENDER_FLOAT64; }
bool is_byte(int type) { return type == ZOX_RENDER_UINT8 || type == ZOX_RENDER_INT8; }

Array checked_array(const zox_render_array& record) {
  Array array;
  check_size(record.size);
  array.type = record.type;
  array.size = {record.size[0], record.size[1], record.size[2]};
  take_addresses(record, array);
  take_part(record, array);
  require(std::isfinite(record.slope) && record.slope != 0, "The slope must be finite and not 0.");
  require(std::isfinite(record.intercept), "The intercept must be finite.");
  array.slope = record.slope;
  array.intercept = record.intercept;
  array.range_given = record.lowest != 0 || record.highest != 0;
  require(std::isfinite(record.lowest) && std::isfinite(record.highest) && record.lowest <= record.highest,
          "lowest and highest must be finite, and lowest must not be above highest.");
  array.lowest = record.lowest;
  array.highest = record.highest;
  return array;
}

}  // namespace render
