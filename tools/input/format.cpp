#include "format.h"

#include <cmath>

#include "text.h"

namespace zox::input {

zox_render_array empty_array() {
  zox_render_array array{};
  array.record_size = sizeof array;
  for (size_t axis = 0; axis < 3; ++axis) array.axes[axis][axis] = 1;
  array.slope = 1;
  return array;
}

size_t type_bytes(int32_t type) {
  switch (type) {
    case ZOX_RENDER_UINT8:
    case ZOX_RENDER_INT8:
      return 1;
    case ZOX_RENDER_INT16:
    case ZOX_RENDER_UINT16:
      return 2;
    case ZOX_RENDER_INT32:
    case ZOX_RENDER_UINT32:
    case ZOX_RENDER_FLOAT32:
      return 4;
    case ZOX_RENDER_FLOAT64:
      return 8;
    default:
      return 0;
  }
}

void refuse_cut(const std::string& path) {
  refuse(quoted(path) + " is damaged or cut short: it does not hold the voxels that its header speaks of.");
}

Found deliver_blocks(const std::string& path, const ReadOptions& options, Found found,
                     decltype(Format::read_block) read_block, VoxelMemory& memory) {
  const auto voxel = static_cast<int64_t>(type_bytes(found.array.type));
  const auto& size = found.array.size;
  found.array.strides[0] = voxel;
  found.array.strides[1] = voxel * size[0];
  found.array.strides[2] = voxel * size[0] * size[1];
  found.in_blocks = options.leave_in_file;
  if (found.in_blocks) return found;
  std::byte* const out = memory.allocate(voxel_count(found.array) * static_cast<uint64_t>(voxel), path);
  read_block(path, options, found.array, {{0, 0, 0}, {size[0], size[1], size[2]}}, out);
  return found;
}

uint64_t chosen_volume(const std::string& path, uint64_t count, int wanted) {
  if (wanted < 0 && count > 1)
    refuse(quoted(path) + " holds " + std::to_string(count) + " volumes; choose one of 0 to " +
           std::to_string(count - 1) + ".");
  if (wanted >= 0 && static_cast<uint64_t>(wanted) >= count)
    refuse(quoted(path) + " has no volume " + std::to_string(wanted) + ": it holds " + std::to_string(count) +
           ", counted from 0.");
  return wanted < 0 ? 0 : static_cast<uint64_t>(wanted);
}

uint64_t voxel_count(const zox_render_array& array) {
  uint64_t count = 1;
  for (const int32_t size : array.size)
    if (__builtin_mul_overflow(count, static_cast<uint64_t>(size), &count))
      refuse("The volume has more voxels than can be counted.");
  return count;
}

void check_geometry(const std::string& path, const zox_render_array& array) {
  for (size_t axis = 0; axis < 3; ++axis)
    if (array.size[axis] < 2)
      refuse(quoted(path) + " is " + std::to_string(array.size[axis]) + " voxels long along its axis " +
             std::to_string(axis) + "; a volume has 2 at least.");
  const auto& [a, b, c] = array.axes;
  const double volume = a[0] * (b[1] * c[2] - b[2] * c[1]) + a[1] * (b[2] * c[0] - b[0] * c[2]) +
                        a[2] * (b[0] * c[1] - b[1] * c[0]);
  const double box =
      std::hypot(a[0], a[1], a[2]) * std::hypot(b[0], b[1], b[2]) * std::hypot(c[0], c[1], c[2]);
  // A share of the volume of a box with edges as long.
  constexpr double kLeastShare = 0.1;
  if (!std::isfinite(box) || volume == 0 || !(std::abs(volume) >= kLeastShare * box))
    refuse(quoted(path) + " has axes or spacings that hardly span a volume.");
}

}  // namespace zox::input
