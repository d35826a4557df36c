#include "view/clip.h"

#include <algorithm>

namespace render {
namespace {

// Positions are whole numbers below 2^52, steps whole numbers. A quotient that is not whole lies at least
// 1 / |step| from any whole number, and is rounded by less than half of that: hence floor and ceiling of the
// rounded quotient are those of the quotient. Returned unrounded.
Stretch along(double low, double high, double middle, double step, const Stretch& samples) {
  if (step == 0) return middle < low || middle > high ? Stretch{} : samples;
  const double a = (low - middle) / step, b = (high - middle) / step;
  return {std::max(samples.first, std::min(a, b)), std::min(samples.last, std::max(a, b))};
}

// Of numbers below 2^52.
double ceiling(double v) {
  const double cut = static_cast<double>(static_cast<int64_t>(v));
  return cut < v ? cut + 1 : cut;
}

Stretch whole(const Stretch& samples) { return {ceiling(samples.first), -ceiling(-samples.last)}; }

// The ends of a region in units of the grid. Neighbouring regions share no sample: each has its lower end.
struct Ends {
  double low, high;
};

Ends region_ends(const Frame& frame, size_t j, bool nearest) {
  const Region& region = frame.regions[j];
  const bool is_first = j == 0, is_last = j + 1 == frame.regions.size();
  const double low = to_whole((is_first && nearest ? frame.outer_low() : region.low) * kGrid);
  const double high = to_whole((is_last && nearest ? frame.outer_high() : region.high) * kGrid);
  return {low, is_last && !nearest ? high : high - 1};
}

}  // namespace

SampleBox owned_box(const Volume& volume, bool nearest) {
  SampleBox box;
  for (size_t a = 0; a < 3; ++a) {
    const int low = volume.owned_first[a], end = low + volume.owned_size[a];
    require(nearest || end == volume.frame.size[a] || end < volume.first[a] + volume.size[a],
            "Trilinear samples need the voxels after the last owned ones, which the part does not hold.");
    box.low[a] = (low - (nearest ? 0.5 : 0)) * kGrid;
    box.high[a] = (end - (nearest ? 0.5 : 0)) * kGrid - 1;
    if (!nearest && end == volume.frame.size[a]) box.high[a] = (end - 1) * kGrid;
  }
  return box;
}

SampleBox readable_box(const Volume& volume, bool nearest) {
  SampleBox box = owned_box(volume, nearest);
  if (nearest) return box;
  for (size_t a = 0; a < 3; ++a) {
    const double last = (volume.first[a] + volume.size[a] - 1) * kGrid;
    if (!volume.has_next[a]) box.high[a] = std::min(box.high[a], last - 1);
  }
  return box;
}

Stretch clip(const SampleBox& box, const Line& line, const Stretch& within) {
  Stretch samples = within;
  for (size_t a = 0; a < 3; ++a)
    samples = along(box.low[a], box.high[a], line.middle[a], line.step[a], samples);
  return whole(samples);
}

// As above, in lanes, without a branch: quarters of a unit are added, which no whole number lies between, so
// that no line along a face divides 0 by 0. Steps of 0 become so small that a line misses all samples or
// none.
RENDER_IN_LANES void clip(const SampleBox& box, const LineLanes& lines, const Stretch& within,
                          StretchLanes& samples) {
  alignas(64) Lanes<double> first, last;
  first.fill(within.first);
  last.fill(within.last);
  for (size_t axis = 0; axis < 3; ++axis) {
    const double low = box.low[axis] - 0.25, high = box.high[axis] + 0.25;
    const Lanes<double>&middles = lines.middle[axis], &steps = lines.step[axis];
    for (size_t i = 0; i < kLanes; ++i) {
      const double step = steps[i] == 0 ? 1e-30 : steps[i];
      const double a = (low - middles[i]) / step, b = (high - middles[i]) / step;
      const double nearer = a < b ? a : b, farther = a < b ? b : a;
      first[i] = first[i] < nearer ? nearer : first[i];
      last[i] = farther < last[i] ? farther : last[i];
    }
  }
  constexpr double kBeyond = StretchLanes::kBeyond;
  for (size_t i = 0; i < kLanes; ++i) {
    const double from = to_whole(first[i]), to = to_whole(last[i]);
    const double begin = from < first[i] ? from + 1 : from, end = to > last[i] ? to - 1 : to;
    samples.first[i] = static_cast<int32_t>(begin <= end ? begin : kBeyond);
    samples.last[i] = static_cast<int32_t>(begin <= end ? end : -kBeyond);
  }
}

Piece piece_in_region(const Frame& frame, size_t j, bool nearest, const Line& line, const Stretch& within) {
  Piece piece{line, within};
  const Ends ends = region_ends(frame, j, nearest);
  piece.samples = along(ends.low, ends.high, line.middle[2], line.step[2], within);
  // Of the whole, which a part lies in: the step is rounded for the samples that are taken, and the same in
  // all parts.
  for (size_t a = 0; a < 2; ++a)
    piece.samples = along(-kGrid / 2, frame.size[a] * kGrid, line.middle[a], line.step[a], piece.samples);
  piece.samples = whole(piece.samples);
  if (piece.samples.empty()) return piece;
  const Region& region = frame.regions[j];
  const auto slice_at = [&](double n) {
    const double units = line.middle[2] + n * line.step[2] - region.low * kGrid;
    const double slices = to_whole(units * region.slices_per_unit());
    return std::clamp(slices, -kGrid / 2, (region.last - region.first + 0.5) * kGrid - 1) +
           region.first * kGrid;
  };
  const double first = piece.samples.first, count = piece.samples.last - first;
  const double from = slice_at(first), to = slice_at(piece.samples.last);
  const double step = count > 0 ? (to - from) / count : 0;
  // The nearest step may overshoot the last sample: not where that would leave the region.
  const double end = from + count * to_whole(step);
  const bool stays = end == to || (end > region.first * kGrid && end < region.last * kGrid);
  piece.line.step[2] = stays ? to_whole(step) : std::trunc(step);
  piece.line.middle[2] = from - first * piece.line.step[2];
  return piece;
}

}  // namespace render
