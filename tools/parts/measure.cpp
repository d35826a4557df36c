#include "measure.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace zox::parts {
namespace {

constexpr int32_t kTile = 16;

template <class Voxel>
bool counts(Voxel value) {
  if constexpr (std::is_floating_point_v<Voxel>) return std::isfinite(value);
  return true;
}

struct Ends {
  double lowest, highest;
};

// The largest voxel of every tile of a slice, and the slice's range.
template <class Voxel>
Ends scan_slice(const zox_render_array& array, const std::byte* slice, std::vector<double>& tiles) {
  Ends ends{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
  const int32_t across = (array.size[0] + kTile - 1) / kTile;
  tiles.assign(static_cast<size_t>(across) * static_cast<size_t>((array.size[1] + kTile - 1) / kTile),
               -std::numeric_limits<double>::infinity());
  for (int32_t y = 0; y < array.size[1]; ++y)
    for (int32_t x = 0; x < array.size[0]; ++x) {
      Voxel voxel;
      std::memcpy(&voxel, slice + y * array.strides[1] + x * array.strides[0], sizeof voxel);
      if (!counts(voxel)) continue;
      const auto value = static_cast<double>(voxel);
      double& tile = tiles[static_cast<size_t>(y / kTile * across + x / kTile)];
      tile = std::max(tile, value);
      ends.lowest = std::min(ends.lowest, value);
    }
  for (const double tile : tiles) ends.highest = std::max(ends.highest, tile);
  return ends;
}

Ends scan(const zox_render_array& array, const std::byte* slice, std::vector<double>& tiles) {
  switch (array.type) {
    case ZOX_RENDER_UINT8:
      return scan_slice<uint8_t>(array, slice, tiles);
    case ZOX_RENDER_INT8:
      return scan_slice<int8_t>(array, slice, tiles);
    case ZOX_RENDER_INT16:
      return scan_slice<int16_t>(array, slice, tiles);
    case ZOX_RENDER_UINT16:
      return scan_slice<uint16_t>(array, slice, tiles);
    case ZOX_RENDER_INT32:
      return scan_slice<int32_t>(array, slice, tiles);
    case ZOX_RENDER_UINT32:
      return scan_slice<uint32_t>(array, slice, tiles);
    case ZOX_RENDER_FLOAT32:
      return scan_slice<float>(array, slice, tiles);
    default:
      return scan_slice<double>(array, slice, tiles);
  }
}

void set_packed_strides(zox_render_array& array) {
  if (array.strides[0] || array.strides[1] || array.strides[2]) return;
  array.strides[0] = static_cast<int64_t>(type_bytes(array.type));
  array.strides[1] = array.strides[0] * array.size[0];
  array.strides[2] = array.strides[1] * array.size[1];
}

}  // namespace

Measure measure(const Source& source, int32_t first, int32_t count, uint64_t most_bytes) {
  const zox_render_array& whole = source.whole();
  const uint64_t slice_bytes = uint64_t(whole.size[0]) * uint64_t(whole.size[1]) * type_bytes(whole.type);
  const auto at_once = static_cast<int32_t>(std::clamp<uint64_t>(most_bytes / slice_bytes, 1, INT32_MAX));
  Measure result;
  result.slice_weights.resize(static_cast<size_t>(whole.size[2]));
  std::vector<double> tiles;
  for (int32_t done = 0; done < count; done += std::min(at_once, count - done)) {
    const int32_t z = first + done;
    Part part;
    part.size = {whole.size[0], whole.size[1], std::min(at_once, count - done)};
    part.first[2] = z;
    PartArray taken = source.take(part);
    set_packed_strides(taken.array);
    for (int32_t s = 0; s < part.size[2]; ++s) {
      const auto* slice = static_cast<const std::byte*>(taken.array.data) + s * taken.array.strides[2];
      const Ends ends = scan(taken.array, slice, tiles);
      result.lowest = std::min(result.lowest, ends.lowest);
      result.highest = std::max(result.highest, ends.highest);
      const double half = (result.lowest + result.highest) / 2;
      result.slice_weights[static_cast<size_t>(z + s)] = static_cast<double>(
          std::count_if(tiles.begin(), tiles.end(), [&](double tile) { return tile > half; }));
    }
  }
  return result;
}

}  // namespace zox::parts
