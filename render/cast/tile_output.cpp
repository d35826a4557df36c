// Writing what a tile has found.
#include <algorithm>

#include "cast/tile.h"

namespace render {
namespace {

template <class Element>
Element& at(Element* plane, int64_t pitch, int64_t column, int64_t row) {
  return reinterpret_cast<Element*>(reinterpret_cast<std::byte*>(plane) + row * pitch)[column];
}

}  // namespace

// Halves are rounded up: a floor, for negative sums too.
int Tile::mean(size_t lane) const {
  const int64_t twice = 2 * sum_[lane] + count_[lane], divisor = 2 * count_[lane];
  return static_cast<int>((twice - (twice % divisor + divisor) % divisor) / divisor);
}

// Four neighbours of a row at a time, as the lanes of a quad lie.
template <class Element>
void Tile::put(const Lanes<Element>& values, Element* plane, int64_t pitch) const {
  for (size_t begin = 0; begin < kLanes; begin += kQuadEdge) {
    const int column = static_cast<int>(columns_[begin]), row = static_cast<int>(rows_[begin]);
    if (row >= scene_.height || column >= scene_.width) continue;
    const auto count = static_cast<size_t>(std::min(scene_.width - column, kQuadEdge));
    std::copy_n(&values[begin], count, &at(plane, pitch, column, row));
  }
}

void Tile::write() const {
  const zox_render_picture& picture = scene_.picture;
  alignas(64) Lanes<int32_t> samples = best_;
  if (scene_.casting.wanted.sum)
    for (size_t lane = 0; lane < kLanes; ++lane)
      if (any_ >> lane & 1) samples[lane] = mean(lane);
  // Where there is nothing, `nothing` is written.
  const auto put_all = [&](auto& values, auto nothing, auto* plane, int64_t plane_pitch) {
    for (uint64_t none = ~any_; none != 0; none &= none - 1)
      values[static_cast<size_t>(__builtin_ctzll(none))] = nothing;
    put(values, plane, plane_pitch);
  };
  if (picture.pixels) {
    alignas(64) Lanes<uint8_t> shades{};
    if (any_ != 0) scene_.shades.shade(samples, shades);
    put_all(shades, uint8_t{0}, picture.pixels, picture.pixels_pitch);
  }
  if (picture.samples) {
    Lanes<int16_t> narrow;
    std::copy(samples.begin(), samples.end(), narrow.begin());
    put_all(narrow, int16_t{ZOX_RENDER_NOTHING}, picture.samples, picture.samples_pitch);
  }
  if (picture.depths) {
    Lanes<int32_t> depths = at_;
    for (int32_t& depth : depths) depth += scene_.rays.number_offset();
    put_all(depths, int32_t{ZOX_RENDER_NO_DEPTH}, picture.depths, picture.depths_pitch);
  }
}

}  // namespace render
