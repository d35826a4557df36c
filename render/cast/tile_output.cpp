// Writing what a tile has found.
#include "cast/tile.h"

namespace render {
namespace {

template <class Element>
Element& at(Element* plane, int64_t pitch, int64_t column, int64_t row) {
  return reinterpret_cast<Element*>(reinterpret_cast<std::byte*>(plane) + row * pitch)[column];
}

}  // namespace

int Tile::final_sample(size_t lane) const {
  if (!scene_.casting.wanted.sum) return best_[lane];
  // The mean, halves rounded up: a floor, for negative sums too.
  const int64_t twice = 2 * sum_[lane] + count_[lane], divisor = 2 * count_[lane];
  return static_cast<int>((twice - (twice % divisor + divisor) % divisor) / divisor);
}

void Tile::write_lane(size_t lane, int sample, uint8_t shade) const {
  const zox_render_picture& picture = scene_.picture;
  const int64_t column = static_cast<int64_t>(columns_[lane]), row = static_cast<int64_t>(rows_[lane]);
  const bool any = any_ >> lane & 1;
  if (picture.pixels) at(picture.pixels, picture.pixels_pitch, column, row) = any ? shade : uint8_t{0};
  if (picture.samples)
    at(picture.samples, picture.samples_pitch, column, row) =
        static_cast<int16_t>(any ? sample : ZOX_RENDER_NOTHING);
  if (picture.depths)
    at(picture.depths, picture.depths_pitch, column, row) =
        any ? at_[lane] + scene_.rays.number_offset() : ZOX_RENDER_NO_DEPTH;
}

void Tile::write() const {
  alignas(64) Lanes<int32_t> samples{};
  alignas(64) Lanes<uint8_t> shades{};
  for (size_t lane = 0; lane < kLanes; ++lane)
    if (any_ >> lane & 1) samples[lane] = final_sample(lane);
  if (scene_.picture.pixels) scene_.shades.shade(samples, shades);
  for (size_t lane = 0; lane < kLanes; ++lane)
    if (columns_[lane] < scene_.width && rows_[lane] < scene_.height)
      write_lane(lane, samples[lane], shades[lane]);
}

}  // namespace render
