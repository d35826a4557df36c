#include "cast/tile.h"

#include <algorithm>

#include "cast/end_sample.h"

namespace render {
namespace {

double seconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

template <class Element>
Element& at(Element* plane, int64_t pitch, int64_t column, int64_t row) {
  return reinterpret_cast<Element*>(reinterpret_cast<std::byte*>(plane) + row * pitch)[column];
}

}  // namespace

Tile::Tile(const Scene& scene)
    : scene_(scene), batch_(scene.casting), sections_(scene.volume.frame.regions.size()) {}

void Tile::render(int left, int top) {
  const double begin = seconds();
  find_rays(left, top);
  if (scene_.skip) find_candidates();
  const double bounded = seconds();
  scene_.skip ? cast_candidates() : cast_everything();
  const double cast = seconds();
  write(left, top);
  counts_.seconds_bounds += bounded - begin;
  counts_.seconds_cast += cast - bounded;
  counts_.seconds_window += seconds() - cast;
}

void Tile::find_rays(int left, int top) {
  for (Section& section : sections_) {
    section.lines.clear();
    section.samples.clear();
    section.pixels.clear();
    section.all = {1e300, -1e300};
  }
  for (int p = 0; p < kTileEdge * kTileEdge; ++p) {
    pixels_[static_cast<size_t>(p)] = {scene_.floor, 0, 0, 0, false};
    const int column = left + p % kTileEdge, row = top + p / kTileEdge;
    if (column < scene_.width && row < scene_.height) add_ray(p, scene_.rays.line(column, row));
  }
}

void Tile::add_ray(int pixel, const Line& line) {
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
  counts_.rays += pixels_[static_cast<size_t>(pixel)].any;
}

void Tile::add_piece(size_t region, int pixel, const Line& line, const Stretch& owned) {
  if (owned.empty()) return;
  pixels_[static_cast<size_t>(pixel)].any = true;
  counts_.samples += static_cast<int64_t>(owned.last - owned.first) + 1;
  Stretch readable = clip(scene_.readable, line, owned);
  if (readable.empty()) return take_end_samples(pixel, line, owned.first, owned.last);
  take_end_samples(pixel, line, owned.first, readable.first - 1);
  take_end_samples(pixel, line, readable.last + 1, owned.last);
  Section& section = sections_[region];
  section.lines.push_back(line);
  section.samples.push_back(readable);
  section.pixels.push_back(pixel);
  section.all = {std::min(section.all.first, readable.first), std::max(section.all.last, readable.last)};
}

void Tile::take_end_samples(int pixel, const Line& line, double first, double last) {
  Pixel& into = pixels_[static_cast<size_t>(pixel)];
  for (double n = first; n <= last; ++n) {
    std::array<double, 3> position;
    for (size_t a = 0; a < 3; ++a) position[a] = line.middle[a] + n * line.step[a];
    const int sample = end_sample(scene_.volume, position);
    ++counts_.cast;
    take(into, sample, n);
    into.sum += sample;
    ++into.count;
  }
}

// Of equal samples the nearest to the viewer wins.
void Tile::take(Pixel& pixel, int sample, double number) {
  if (scene_.order.better(sample, pixel.best) || (sample == pixel.best && number < pixel.at)) {
    pixel.best = sample;
    pixel.at = number;
  }
}

int Tile::best_within(const Section& section, double first, double last) const {
  Size3 low, high;
  section.bundle.cells(first, last, scene_.volume, scene_.casting.sampler.nearest, low, high);
  const Bounds& bounds = scene_.volume.bounds;
  const Wanted& wanted = scene_.casting.wanted;
  const int largest = wanted.largest ? bounds.largest.over(low, high) : Order::kNone;
  if (!wanted.smallest) return largest;
  const int smallest = bounds.smallest.over(low, high);
  return scene_.order.better(largest, smallest) ? largest : smallest;
}

// Stretches begin at multiples of their length. The most promising comes first; of equals the nearest.
void Tile::find_candidates() {
  candidates_.clear();
  for (size_t j = 0; j < sections_.size(); ++j) {
    Section& section = sections_[j];
    if (section.lines.empty()) continue;
    section.bundle.reset(section.all.first, section.all.last);
    for (const Line& line : section.lines) section.bundle.add(line);
    double first = section.all.first;
    while (first <= section.all.last) {
      const double next = (std::floor(first / scene_.stretch) + 1) * scene_.stretch;
      const double last = std::min(next - 1, section.all.last);
      const int best = best_within(section, first, last);
      if (scene_.order.better(best, scene_.floor)) candidates_.push_back({best, j, first, last});
      first = next;
    }
  }
  std::sort(candidates_.begin(), candidates_.end(), [this](const Candidate& a, const Candidate& b) {
    return a.best != b.best ? scene_.order.better(a.best, b.best) : a.first < b.first;
  });
}

bool Tile::can_improve(const Pixel& pixel, const Candidate& candidate) const {
  if (scene_.ceiling != Order::kNone && !scene_.order.better(scene_.ceiling, pixel.best)) return false;
  if (scene_.order.better(candidate.best, pixel.best)) return true;
  return scene_.casting.wanted.places && candidate.best == pixel.best && candidate.first < pixel.at;
}

void Tile::cast_candidates() {
  for (const Candidate& candidate : candidates_) {
    const Section& section = sections_[candidate.section];
    for (size_t ray = 0; ray < section.lines.size(); ++ray)
      if (can_improve(pixels_[static_cast<size_t>(section.pixels[ray])], candidate))
        add_items(section, ray, candidate.first, candidate.last);
    run_batch();
  }
}

void Tile::cast_everything() {
  for (const Section& section : sections_)
    for (double first = section.all.first; first <= section.all.last; first += scene_.casting.most_samples)
      for (size_t ray = 0; ray < section.lines.size(); ++ray)
        add_items(section, ray, first, first + scene_.casting.most_samples - 1);
  run_batch();
}

void Tile::add_items(const Section& section, size_t ray, double first, double last) {
  const Stretch& samples = section.samples[ray];
  first = std::max(first, samples.first);
  last = std::min(last, samples.last);
  if (first > last) return;
  if (batch_.full()) run_batch();
  batch_.add({section.lines[ray], first, static_cast<int>(last - first) + 1, section.pixels[ray]});
}

void Tile::run_batch() {
  if (batch_.empty()) return;
  const Reduced& reduced = batch_.run();
  const Wanted& wanted = scene_.casting.wanted;
  for (size_t i = 0; i < batch_.items().size(); ++i) {
    const Item& item = batch_.items()[i];
    Pixel& pixel = pixels_[static_cast<size_t>(item.owner)];
    counts_.cast += item.count;
    if (wanted.largest)
      take(pixel, reduced.largest[i], item.first + (wanted.places ? reduced.largest_at[i] : 0));
    if (wanted.smallest)
      take(pixel, reduced.smallest[i], item.first + (wanted.places ? reduced.smallest_at[i] : 0));
    if (wanted.sum) pixel.sum += reduced.sum[i];
    pixel.count += item.count;
  }
  batch_.clear();
}

int Tile::final_sample(const Pixel& pixel) const {
  if (!scene_.casting.wanted.sum) return pixel.best;
  // The mean, halves rounded up: a floor, for negative sums too.
  const int64_t twice = 2 * pixel.sum + pixel.count, divisor = 2 * pixel.count;
  return static_cast<int>((twice - (twice % divisor + divisor) % divisor) / divisor);
}

void Tile::write_pixel(const Pixel& pixel, int64_t column, int64_t row) const {
  const zox_render_picture& picture = scene_.picture;
  const int sample = pixel.any ? final_sample(pixel) : ZOX_RENDER_NOTHING;
  if (picture.pixels) {
    const bool shown = pixel.any && sample != Order::kNone;
    at(picture.pixels, picture.pixels_pitch, column, row) = shown ? scene_.shades.shade(sample) : uint8_t{0};
  }
  if (picture.samples) at(picture.samples, picture.samples_pitch, column, row) = static_cast<int16_t>(sample);
  if (picture.depths)
    at(picture.depths, picture.depths_pitch, column, row) =
        pixel.any ? static_cast<int32_t>(pixel.at) + scene_.rays.number_offset() : ZOX_RENDER_NO_DEPTH;
}

void Tile::write(int left, int top) {
  for (int p = 0; p < kTileEdge * kTileEdge; ++p) {
    const int column = left + p % kTileEdge, row = top + p / kTileEdge;
    if (column < scene_.width && row < scene_.height)
      write_pixel(pixels_[static_cast<size_t>(p)], column, row);
  }
}

}  // namespace render
