// Where each ray of a batch stands: turned so that its slices ascend, region after region.
#pragma once

#include "stack/cursor_lanes.h"
#include "stack/region_walk.h"
#include "stack/stack_view.h"

namespace zox::ZOX_SET {
namespace {

template <SliceRules rules>
class RayCursors {
 public:
  RayCursors(const Regions& regions, const Traces& traces) : regions_(regions), traces_(traces) {}

  // Sets each lane to the lowest sample of its ray. False if the regions, or a ray's z, do not run one way.
  bool start() {
    for (int i = 0; i < padded(traces_.n); ++i) lanes.slice[i] = kNoSlice;
    Range z;
    const bool wraps = !reached(traces_.z, traces_.sz, z);
    reach.inside = !wraps && within(z, Reach::kRoundings) && reached(traces_.x, traces_.sx, reach.x) &&
                   reached(traces_.y, traces_.sy, reach.y);
    if (one_region()) return start_in_only_region(lanes);
    if (wraps || !within(z, kSlack) || !regions_ascend()) return false;
    for (int i = 0; i < traces_.n; ++i) start_in_first_region(i);
    return true;
  }

  int lowest_slice() const {
    int lowest = kNoSlice;
    for (int i = 0; i < padded(traces_.n); ++i) lowest = lanes.slice[i] < lowest ? lanes.slice[i] : lowest;
    return lowest;
  }

  // Sets the lane to the lowest sample in the next region, upwards, that holds any.
  void enter_region(int lane) {
    const int n = traces_.count[lane], z = traces_.z[lane], sz = traces_.sz[lane];
    const bool rising = sz >= 1;
    lanes.slice[lane] = kNoSlice;
    for (int j = region_[lane]; j < regions_.n; ++j) {
      int below = j == 0 ? (rising ? 0 : n) : first_beyond(lane, regions_.Zb[j]);
      int above = j == regions_.n - 1 ? (rising ? n : 0) : first_beyond(lane, regions_.Zb[j + 1]);
      int first = rising ? below : above, end = rising ? above : below;
      if (first >= end) continue;
      bool more = rising ? end < n : first > 0;
      region_[lane] = more ? j + 1 : regions_.n;
      const int position = regions_.position(static_cast<int>(z + int64_t{sz} * first), j);
      start_segment(lanes, traces_, lane,
                    {first, end, position, regions_.step(sz, j), regions_.first_slice[j]});
      return;
    }
  }

  // How many samples the lane has left in its region.
  int left(int lane) const {
    int apart = lanes.last_number[lane] - lanes.number[lane];
    return plane_of(apart < 0 ? -apart : apart) + 1;
  }

  // Moves the lane by some of these samples.
  void advance(int lane, int by) {
    const bool ended = by == left(lane);
    lanes.advance(lane, by);
    lanes.slice[lane] = ended ? kNoSlice : slice_of<rules>(lanes.position[lane], lanes.first_slice[lane]);
    if (ended && !one_region()) enter_region(lane);
  }

  // Whether every ray has eight samples or more in a slice.
  bool flat() const { return range_of(lanes.position_step.at, traces_.n).high <= 1 << (rules.bits - 3); }

  int count() const { return traces_.n; }
  bool one_region() const { return regions_.n == 1; }

  CursorLanes lanes;
  Reach reach;

 private:
  // How far beyond the regions z may be: a rounded step is off by half a unit at most, and a trilinear ray
  // has less than 2^21 of them; truncated steps fall short.
  static constexpr int64_t kSlack = 1 << rules.bits;
  // Leaves room for the half slice, 2^20, that rounding adds.
  static constexpr int kLargestPosition = INT32_MAX - (1 << 22);

  // Samples first .. end - 1 of a ray, in one region.
  struct Segment {
    int first, end;
    int position;  // of the first
    int step;      // from position to position
    int first_slice;
  };

  // What the rays reach, each from its start on, by steps that are alike. False if a sum wraps.
  bool reached(const Lanes<int>& start, const Lanes<int>& step, Range& range) const {
    Lanes<int> last;
    int64_t lost = 0;
    for (int i = 0; i < traces_.n; ++i) {
      const int64_t at = start[i] + int64_t{step[i]} * (traces_.count[i] - 1);
      last[i] = static_cast<int>(at);
      lost |= at ^ last[i];
    }
    range = range_of(start.at, traces_.n);
    range.include(range_of(last.at, traces_.n));
    return lost == 0;
  }

  bool within(Range z, int64_t slack) const {
    return z.low >= regions_.Zb[0] - slack && z.high <= regions_.Zb[regions_.n] + slack;
  }

  // Whether region after region leads to higher slices only, and neither a distance in a region nor
  // a position can overflow.
  bool regions_ascend() const {
    for (int j = 0; j < regions_.n; ++j) {
      int64_t depth = int64_t{regions_.Zb[j + 1]} - regions_.Zb[j];
      if (depth < 0 || depth + kSlack > INT32_MAX) return false;
      double last_position = static_cast<double>(depth + kSlack) * regions_.scale[j];
      if (!(regions_.scale[j] >= 0 && last_position < kLargestPosition)) return false;
      int last =
          slice_of<rules>(truncate(static_cast<double>(depth) * regions_.scale[j]), regions_.first_slice[j]);
      if (j + 1 < regions_.n && last > regions_.first_slice[j + 1]) return false;
    }
    return true;
  }

  bool start_in_only_region(CursorLanes& __restrict to) const {
    const Traces& __restrict t = traces_;
    Lanes<double> real;
    Lanes<int> position, step;
    for (int i = 0; i < padded(t.n); ++i) real[i] = regions_.distance(t.z[i], 0) * regions_.scale[0];
    truncate_lanes(real.at, position.at, t.n);
    for (int i = 0; i < padded(t.n); ++i) real[i] = regions_.scale[0] * static_cast<double>(t.sz[i]);
    truncate_lanes(real.at, step.at, t.n);
    Range positions;
    if (!reached(position, step, positions) || positions.high > kLargestPosition) return false;
    const int first_slice = regions_.first_slice[0];
    for (int i = 0; i < t.n; ++i) start_segment(to, t, i, {0, t.count[i], position[i], step[i], first_slice});
    return true;
  }

  void start_in_first_region(int lane) {
    const int sz = traces_.sz[lane];
    const int low = traces_.z[lane] + (sz < 0 ? sz * (traces_.count[lane] - 1) : 0);
    int j = 0;
    if (sz >= 1) {
      while (j + 1 < regions_.n && regions_.Zb[j + 1] < low) ++j;
    } else {
      while (j + 1 < regions_.n && regions_.Zb[j + 1] <= low) ++j;
    }
    region_[lane] = j;
    enter_region(lane);
  }

  // The first sample of a ray that lies beyond a boundary: above it if rising, below if falling.
  int first_beyond(int lane, int boundary) const {
    const int sz = traces_.sz[lane], n = traces_.count[lane];
    const int64_t step = sz >= 1 ? sz : -int64_t{sz};
    const int64_t gap = sz >= 1 ? int64_t{boundary} - traces_.z[lane] : int64_t{traces_.z[lane]} - boundary;
    if (gap < 0) return 0;
    return gap >= step * (n - 1) ? n : static_cast<int>(gap / step) + 1;
  }

  // Walked from the end whose slice is lower; in 32 bits the way back comes to exactly the same positions.
  [[gnu::always_inline]] static inline void start_segment(CursorLanes& to, const Traces& t, int lane,
                                                          Segment s) {
    const int back = s.step < 0 ? s.end - 1 - s.first : 0, sign = s.step < 0 ? -1 : 1, k = s.first + back;
    to.x[lane] = wrap_add(t.x[lane], wrap_mul(k, t.sx[lane]));
    to.y[lane] = wrap_add(t.y[lane], wrap_mul(k, t.sy[lane]));
    to.position[lane] = wrap_add(s.position, wrap_mul(back, s.step));
    to.number[lane] = sample_number(t.ray[lane], k);
    to.x_step[lane] = wrap_mul(sign, t.sx[lane]);
    to.y_step[lane] = wrap_mul(sign, t.sy[lane]);
    to.position_step[lane] = wrap_mul(sign, s.step);
    to.number_step[lane] = sample_number(0, sign);
    to.last_number[lane] = sample_number(t.ray[lane], s.step < 0 ? s.first : s.end - 1);
    to.first_slice[lane] = s.first_slice;
    to.slice[lane] = slice_of<rules>(to.position[lane], s.first_slice);
  }

  const Regions& regions_;
  const Traces& traces_;
  int region_[kLanes];  // the one to enter next
};

}  // namespace
}  // namespace zox::ZOX_SET
