#include "cast/tile.h"

#include <algorithm>

#include "cast/end_sample.h"

namespace render {
namespace {

// Where the lanes lie within a tile.
struct Places {
  alignas(64) Lanes<double> columns{}, rows{};
};
constexpr Places kPlaces = [] {
  Places places;
  for (size_t lane = 0; lane < kLanes; ++lane) {
    places.columns[lane] = static_cast<double>((lane / kQuadPixels & 1) * kQuadEdge + lane % kQuadEdge);
    places.rows[lane] =
        static_cast<double>(lane / (2 * kQuadPixels) * kQuadEdge + lane % kQuadPixels / kQuadEdge);
  }
  return places;
}();

RENDER_IN_LANES void find_ends(const StretchLanes& samples, int& first, int& last) {
  int least = samples.first[0], most = samples.last[0];
  for (size_t lane = 1; lane < kLanes; ++lane) {
    least = samples.first[lane] < least ? samples.first[lane] : least;
    most = samples.last[lane] > most ? samples.last[lane] : most;
  }
  first = least;
  last = most;
}

// A tile of at least so many samples tells of its neighbours; this share cast is next to all; so many are not
// tried.
constexpr int64_t kTelling = 2000;
constexpr double kHopeless = 0.9;
constexpr int kUntried = 31;

double seconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace

Tile::Tile(const Scene& scene)
    : scene_(scene),
      all_readable_(scene.owned.high == scene.readable.high),
      batch_(scene.casting),
      sections_(scene.volume.frame.regions.size()) {}

void Tile::begin_task() {
  untried_ = 0;
  now_ = seconds();
}

void Tile::render(int left, int top) {
  const double begin = now_;
  const int64_t samples = counts_.samples, cast_before = counts_.cast;
  find_rays(left, top);
  skip_ = scene_.skip && untried_ == 0;
  if (untried_ > 0) --untried_;
  if (any_ == 0) return write();
  if (skip_) find_candidates();
  const double bounded = seconds();
  skip_ ? cast_candidates() : cast_everything();
  const double cast = seconds();
  write();
  counts_.seconds_bounds += bounded - begin;
  counts_.seconds_cast += cast - bounded;
  now_ = seconds();
  counts_.seconds_window += now_ - cast;
  const int64_t all = counts_.samples - samples;
  if (skip_ && all > kTelling &&
      static_cast<double>(counts_.cast - cast_before) > kHopeless * static_cast<double>(all))
    untried_ = kUntried;
}

void Tile::clear(int left, int top) {
  for (size_t lane = 0; lane < kLanes; ++lane) {
    columns_[lane] = left + kPlaces.columns[lane];
    rows_[lane] = top + kPlaces.rows[lane];
  }
  best_.fill(scene_.floor);
  at_.fill(0);
  sum_.fill(0);
  count_.fill(0);
  any_ = 0;
}

void Tile::find_rays(int left, int top) {
  clear(left, top);
  LineLanes& lines = sections_[0].lines;
  scene_.rays.lines(columns_, rows_, lines);
  if (scene_.volume.frame.even()) {
    find_samples(sections_[0]);
  } else {
    const LineLanes whole = lines;
    for (Section& section : sections_) section.samples.clear();
    for (size_t lane = 0; lane < kLanes; ++lane)
      if (columns_[lane] < scene_.width && rows_[lane] < scene_.height) find_pieces(lane, whole.of(lane));
  }
  counts_.rays += __builtin_popcountll(any_);
  for (uint64_t none = ~any_; none != 0; none &= none - 1)
    best_[static_cast<size_t>(__builtin_ctzll(none))] = scene_.order.unbeatable();
  for (Section& section : sections_) find_ends(section.samples, section.first, section.last);
}

// Of evenly spaced slices.
void Tile::find_samples(Section& section) {
  StretchLanes& samples = section.samples;
  clip(scene_.owned, section.lines, scene_.rays.depths(), samples);
  for (size_t lane = 0; lane < kLanes; ++lane) {
    if (columns_[lane] >= scene_.width || rows_[lane] >= scene_.height) samples.set(lane, {});
    if (samples.empty(lane)) continue;
    any_ |= uint64_t{1} << lane;
    counts_.samples += samples.last[lane] - samples.first[lane] + 1;
    if (all_readable_) continue;
    const Stretch owned{double(samples.first[lane]), double(samples.last[lane])};
    samples.set(lane, readable_of(lane, section.lines.of(lane), owned));
  }
}

void Tile::find_pieces(size_t lane, const Line& line) {
  for (size_t j = 0; j < sections_.size(); ++j) {
    const Piece piece =
        piece_in_region(scene_.volume.frame, j, scene_.casting.sampler.nearest, line, scene_.rays.depths());
    if (piece.samples.empty()) continue;
    const Stretch owned = clip(scene_.owned, piece.line, piece.samples);
    if (owned.empty()) continue;
    any_ |= uint64_t{1} << lane;
    counts_.samples += static_cast<int64_t>(owned.last - owned.first) + 1;
    sections_[j].lines.set(lane, piece.line);
    sections_[j].samples.set(lane, readable_of(lane, piece.line, owned));
  }
}

// Takes the other samples of its own at once. Seldom any: only where a sample lies exactly on the last
// voxels.
Stretch Tile::readable_of(size_t lane, const Line& line, const Stretch& owned) {
  bool all = true;
  for (size_t a = 0; a < 3; ++a) {
    const double from = line.middle[a] + owned.first * line.step[a];
    const double to = line.middle[a] + owned.last * line.step[a];
    all = all && std::max(from, to) <= scene_.readable.high[a];
  }
  if (all) return owned;
  const Stretch readable = clip(scene_.readable, line, owned);
  if (readable.empty()) {
    take_end_samples(lane, line, owned.first, owned.last);
  } else {
    take_end_samples(lane, line, owned.first, readable.first - 1);
    take_end_samples(lane, line, readable.last + 1, owned.last);
  }
  return readable;
}

void Tile::take_end_samples(size_t lane, const Line& line, double first, double last) {
  for (double n = first; n <= last; ++n) {
    std::array<double, 3> position;
    for (size_t a = 0; a < 3; ++a) position[a] = line.middle[a] + n * line.step[a];
    const int sample = end_sample(scene_.volume, position);
    ++counts_.cast;
    take(lane, sample, static_cast<int>(n));
    sum_[lane] += sample;
    ++count_[lane];
  }
}

// Of equal samples the nearest to the viewer wins.
void Tile::take(size_t lane, int sample, int number) {
  if (scene_.order.better(sample, best_[lane]) || (sample == best_[lane] && number < at_[lane])) {
    best_[lane] = sample;
    at_[lane] = number;
  }
}

void Tile::cast_everything() {
  const int most = scene_.casting.most_samples;
  for (const Section& section : sections_)
    for (int first = section.first; first <= section.last; first += most)
      for (size_t lane = 0; lane < kLanes; ++lane) add_stretch(section, lane, first, first + most - 1);
  run_batch();
}

void Tile::add_stretch(const Section& section, size_t lane, int first, int last) {
  first = std::max(first, section.samples.first[lane]);
  last = std::min(last, section.samples.last[lane]);
  if (first > last) return;
  batch_.add(section.lines, lane, first, last - first + 1);
  if (batch_.full()) run_batch();
}

void Tile::take_all(const Reduced& reduced) {
  const Wanted& wanted = scene_.casting.wanted;
  if (wanted.largest && !wanted.smallest && !wanted.places) {
    for (size_t i = 0; i < batch_.size(); ++i) {
      int32_t& best = best_[batch_.lane(i)];
      best = std::max(best, int32_t{reduced.largest[i]});
      counts_.cast += batch_.count(i);
    }
    return;
  }
  for (size_t i = 0; i < batch_.size(); ++i) {
    const size_t lane = batch_.lane(i);
    const int first = batch_.first(i);
    if (wanted.largest) take(lane, reduced.largest[i], first + (wanted.places ? reduced.largest_at[i] : 0));
    if (wanted.smallest)
      take(lane, reduced.smallest[i], first + (wanted.places ? reduced.smallest_at[i] : 0));
    if (wanted.sum) sum_[lane] += reduced.sum[i];
    count_[lane] += batch_.count(i);
    counts_.cast += batch_.count(i);
  }
}

void Tile::run_batch() {
  if (batch_.size() == 0) return;
  take_all(batch_.run());
  batch_.clear();
  if (skip_) find_worst();
}

}  // namespace render
