#include "cast/tile.h"

#include <algorithm>

#include "cast/end_sample.h"

namespace render {
namespace {

// Pixels are numbered quad by quad.
constexpr size_t kQuadPixels = kQuadEdge * kQuadEdge;
int column_of(size_t pixel) {
  return static_cast<int>((pixel / kQuadPixels & 1) * kQuadEdge + pixel % kQuadEdge);
}
int row_of(size_t pixel) {
  return static_cast<int>(pixel / (2 * kQuadPixels) * kQuadEdge + pixel % kQuadPixels / kQuadEdge);
}

// A tile of at least so many samples tells of its neighbours; this share cast is next to all; so many are not
// tried.
constexpr int64_t kTelling = 2000;
constexpr double kHopeless = 0.9;
constexpr int kUntried = 15;

double seconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

template <class Element>
Element& at(Element* plane, int64_t pitch, int64_t column, int64_t row) {
  return reinterpret_cast<Element*>(reinterpret_cast<std::byte*>(plane) + row * pitch)[column];
}

}  // namespace

Tile::Tile(const Scene& scene)
    : scene_(scene),
      all_readable_(scene.owned.high == scene.readable.high),
      batch_(scene.casting),
      sections_(scene.volume.frame.regions.size()) {}

void Tile::render(int left, int top) {
  const double begin = seconds();
  const int64_t samples = counts_.samples, cast_before = counts_.cast;
  find_rays(left, top);
  skip_ = scene_.skip && untried_ == 0;
  if (skip_) find_candidates();
  const double bounded = seconds();
  skip_ ? cast_candidates() : cast_everything();
  const double cast = seconds();
  write(left, top);
  counts_.seconds_bounds += bounded - begin;
  counts_.seconds_cast += cast - bounded;
  counts_.seconds_window += seconds() - cast;
  if (untried_ > 0) --untried_;
  const int64_t all = counts_.samples - samples;
  if (skip_ && all > kTelling &&
      static_cast<double>(counts_.cast - cast_before) > kHopeless * static_cast<double>(all))
    untried_ = kUntried;
}

void Tile::find_rays(int left, int top) {
  for (Section& section : sections_) {
    section.size = 0;
    section.all = {1e300, -1e300};
  }
  best_.fill(scene_.floor);
  at_.fill(0);
  sum_.fill(0);
  count_.fill(0);
  any_.fill(false);
  for (size_t p = 0; p < kTilePixels; ++p) {
    const int column = left + column_of(p), row = top + row_of(p);
    if (column < scene_.width && row < scene_.height) add_ray(p, scene_.rays.line(column, row));
  }
}

void Tile::add_ray(size_t pixel, const Line& line) {
  const Stretch& depths = scene_.rays.depths();
  const Frame& frame = scene_.volume.frame;
  if (frame.even()) {
    add_piece(0, pixel, line, clip(scene_.owned, line, depths));
  } else {
    for (size_t j = 0; j < frame.regions.size(); ++j) {
      const Piece piece = piece_in_region(frame, j, scene_.casting.sampler.nearest, line, depths);
      if (!piece.samples.empty())
        add_piece(j, pixel, piece.line, clip(scene_.owned, piece.line, piece.samples));
    }
  }
  counts_.rays += any_[pixel];
}

void Tile::add_piece(size_t region, size_t pixel, const Line& line, const Stretch& owned) {
  if (owned.empty()) return;
  any_[pixel] = true;
  counts_.samples += static_cast<int64_t>(owned.last - owned.first) + 1;
  const Stretch readable = readable_of(line, owned);
  if (readable.empty()) return take_end_samples(pixel, line, owned.first, owned.last);
  take_end_samples(pixel, line, owned.first, readable.first - 1);
  take_end_samples(pixel, line, readable.last + 1, owned.last);
  Section& section = sections_[region];
  section.lines[section.size] = line;
  section.samples[section.size] = readable;
  section.pixels[section.size] = static_cast<uint8_t>(pixel);
  ++section.size;
  section.all = {std::min(section.all.first, readable.first), std::max(section.all.last, readable.last)};
}

// Seldom less than all: only where a sample lies exactly on the last voxels.
Stretch Tile::readable_of(const Line& line, const Stretch& owned) const {
  if (all_readable_) return owned;
  bool all = true;
  for (size_t a = 0; a < 3; ++a) {
    const double from = line.middle[a] + owned.first * line.step[a];
    const double to = line.middle[a] + owned.last * line.step[a];
    all = all && std::max(from, to) <= scene_.readable.high[a];
  }
  return all ? owned : clip(scene_.readable, line, owned);
}

void Tile::take_end_samples(size_t pixel, const Line& line, double first, double last) {
  for (double n = first; n <= last; ++n) {
    std::array<double, 3> position;
    for (size_t a = 0; a < 3; ++a) position[a] = line.middle[a] + n * line.step[a];
    const int sample = end_sample(scene_.volume, position);
    ++counts_.cast;
    take(pixel, sample, n);
    sum_[pixel] += sample;
    ++count_[pixel];
  }
}

// Of equal samples the nearest to the viewer wins.
void Tile::take(size_t pixel, int sample, double number) {
  if (scene_.order.better(sample, best_[pixel]) || (sample == best_[pixel] && number < at_[pixel])) {
    best_[pixel] = sample;
    at_[pixel] = number;
  }
}

void Tile::cast_everything() {
  for (const Section& section : sections_) {
    const double most = scene_.casting.most_samples;
    for (double first = section.all.first; first <= section.all.last; first += most)
      for (size_t ray = 0; ray < section.size; ++ray) add_stretch(section, ray, first, first + most - 1);
  }
  run_batch();
}

void Tile::add_stretch(const Section& section, size_t ray, double first, double last) {
  const Stretch& samples = section.samples[ray];
  first = std::max(first, samples.first);
  last = std::min(last, samples.last);
  if (first > last) return;
  batch_.add(section.lines[ray], first, static_cast<int>(last - first) + 1, section.pixels[ray]);
  if (batch_.full()) run_batch();
}

void Tile::run_batch() {
  if (batch_.size() == 0) return;
  const Reduced& reduced = batch_.run();
  const Wanted& wanted = scene_.casting.wanted;
  for (size_t i = 0; i < batch_.size(); ++i) {
    const size_t pixel = static_cast<size_t>(batch_.owner(i));
    const double first = batch_.first(i);
    if (wanted.largest) take(pixel, reduced.largest[i], first + (wanted.places ? reduced.largest_at[i] : 0));
    if (wanted.smallest)
      take(pixel, reduced.smallest[i], first + (wanted.places ? reduced.smallest_at[i] : 0));
    if (wanted.sum) sum_[pixel] += reduced.sum[i];
    count_[pixel] += batch_.count(i);
    counts_.cast += batch_.count(i);
  }
  batch_.clear();
  if (skip_) find_worst();
}

int Tile::final_sample(size_t pixel) const {
  if (!scene_.casting.wanted.sum) return best_[pixel];
  // The mean, halves rounded up: a floor, for negative sums too.
  const int64_t twice = 2 * sum_[pixel] + count_[pixel], divisor = 2 * count_[pixel];
  return static_cast<int>((twice - (twice % divisor + divisor) % divisor) / divisor);
}

void Tile::write_pixel(size_t pixel, int64_t column, int64_t row) const {
  const zox_render_picture& picture = scene_.picture;
  const int sample = any_[pixel] ? final_sample(pixel) : ZOX_RENDER_NOTHING;
  if (picture.pixels)
    at(picture.pixels, picture.pixels_pitch, column, row) =
        any_[pixel] ? scene_.shades.shade(sample) : uint8_t{0};
  if (picture.samples) at(picture.samples, picture.samples_pitch, column, row) = static_cast<int16_t>(sample);
  if (picture.depths)
    at(picture.depths, picture.depths_pitch, column, row) =
        any_[pixel] ? static_cast<int32_t>(at_[pixel]) + scene_.rays.number_offset() : ZOX_RENDER_NO_DEPTH;
}

void Tile::write(int left, int top) const {
  for (size_t p = 0; p < kTilePixels; ++p) {
    const int column = left + column_of(p), row = top + row_of(p);
    if (column < scene_.width && row < scene_.height) write_pixel(p, column, row);
  }
}

}  // namespace render
