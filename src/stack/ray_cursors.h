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
    n_ = traces_.n;
    for (int i = 0; i < padded(n_); ++i) {
      lanes.slice[i] = kNoSlice;
      lanes.trace[i] = i;
    }
    Range z;
    const bool wraps = !reached(traces_.z, traces_.sz, z);
    inside_ = !wraps && within(z, kRoundings) && reached(traces_.x, traces_.sx, x_) &&
              reached(traces_.y, traces_.sy, y_);
    if (!one_region() && (wraps || !within(z, kSlack) || !regions_ascend())) return false;
    if (!find_segments()) return false;
    start_segments(lanes);
    return true;
  }

  // Whether offsets reach every sample in these slices.
  bool even(StackView& view, Range slices) const { return inside_ && view.even_for(x_, y_, slices); }

  int lowest_slice() const {
    int lowest = kNoSlice;
    for (int i = 0; i < padded(n_); ++i) lowest = lanes.slice[i] < lowest ? lanes.slice[i] : lowest;
    return lowest;
  }

  // Sets the lane to the lowest sample in the next region, upwards, that holds any.
  void enter_region(int lane) {
    if (find_segment(lane)) {
      start_segment(lanes, traces_, segments_, lane, lanes.trace[lane]);
    } else {
      lanes.slice[lane] = kNoSlice;
    }
  }

  // How many samples the lane has left in its region.
  int left(int lane) const {
    int apart = lanes.last_number[lane] - lanes.at.number[lane];
    return plane_of(apart < 0 ? -apart : apart) + 1;
  }

  // Moves the lane by some of these samples.
  void advance(int lane, int by) {
    const bool ended = by == left(lane);
    for (auto field : kSampleFields) {
      int& at = (lanes.at.*field)[lane];
      at = wrap_add(at, wrap_mul(by, (lanes.step.*field)[lane]));
    }
    lanes.slice[lane] = ended ? kNoSlice : slice_of<rules>(lanes.at.position[lane], lanes.first_slice[lane]);
    if (ended && !one_region()) enter_region(lane);
  }

  void drop_done() { n_ = lanes.drop_done(n_); }

  // Whether every ray has eight samples or more in a slice.
  bool flat() const { return range_of(lanes.step.position.at, n_).high <= 1 << (rules.bits - 3); }

  int longest() const { return range_of(traces_.count.at, traces_.n).high; }
  int count() const { return n_; }
  bool one_region() const { return regions_.n == 1; }

  CursorLanes lanes;

 private:
  // How far beyond the regions z may be: a rounded step is off by half a unit at most, and a trilinear ray
  // has less than 2^21 of them; truncated steps fall short.
  static constexpr int64_t kSlack = 1 << rules.bits;
  // Leaves room for the half slice, 2^20, that rounding adds.
  static constexpr int kLargestPosition = INT32_MAX - (1 << 22);

  // By how much 1024 samples of a step that is off by a unit may miss the regions.
  static constexpr int64_t kRoundings = 1 << 10;

  // Samples first .. end - 1 of a ray, in one region, the first at `position` in slices.
  struct SegmentLanes {
    Lanes<int> first, end, position, step, first_slice;
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

  // Each ray's lowest segment. False if a position overflows; of several regions none does, if they ascend.
  bool find_segments() {
    const Traces& t = traces_;
    Lanes<int> low, high;
    for (int i = 0; i < t.n; ++i) {
      const int last = wrap_add(t.z[i], wrap_mul(t.sz[i], t.count[i] - 1));
      low[i] = t.sz[i] >= 1 ? t.z[i] : last;
      high[i] = t.sz[i] >= 1 ? last : t.z[i];
    }
    Lanes<int> lowest, highest;
    find_regions(low, lowest);
    find_regions(high, highest);
    take_whole_rays(lowest);
    if (one_region()) {
      Range positions;
      return reached(segments_.position, segments_.step, positions) && positions.high <= kLargestPosition;
    }
    for (int i = 0; i < t.n; ++i) {
      lanes.next_region[i] = lowest[i] == highest[i] ? regions_.n : lowest[i];
      if (lowest[i] != highest[i]) find_segment(i);
    }
    return true;
  }

  // The regions of samples at these z.
  void find_regions(const Lanes<int>& z, Lanes<int>& __restrict region) const {
    for (int i = 0; i < traces_.n; ++i) region[i] = 0;
    for (int j = 1; j < regions_.n; ++j) {
      const int bound = regions_.Zb[j];
      for (int i = 0; i < traces_.n; ++i)
        region[i] += int{bound < z[i]} | (int{bound == z[i]} & int{traces_.sz[i] < 1});
    }
  }

  // As if every ray stayed in its region.
  void take_whole_rays(const Lanes<int>& region) {
    SegmentLanes& to = segments_;
    const int n = traces_.n;
    Lanes<double> real, scale;
    for (int i = 0; i < n; ++i) {
      scale[i] = regions_.scale[region[i]];
      real[i] = regions_.distance(traces_.z[i], region[i]) * scale[i];
      to.first_slice[i] = regions_.first_slice[region[i]];
      to.first[i] = 0;
      to.end[i] = traces_.count[i];
    }
    for (int i = n; i < padded(n); ++i) real[i] = 0, scale[i] = 0;
    truncate_lanes(real.at, to.position.at, n);
    for (int i = 0; i < padded(n); ++i) real[i] = scale[i] * static_cast<double>(traces_.sz[i]);
    truncate_lanes(real.at, to.step.at, n);
  }

  // The lane's samples in the next region, upwards, that holds any. False if none does.
  bool find_segment(int lane) {
    const int trace = lanes.trace[lane];
    const int n = traces_.count[trace], z = traces_.z[trace], sz = traces_.sz[trace];
    const bool rising = sz >= 1;
    for (int j = lanes.next_region[lane]; j < regions_.n; ++j) {
      const int below = j == 0 ? (rising ? 0 : n) : first_beyond(trace, regions_.Zb[j]);
      const int above = j == regions_.n - 1 ? (rising ? n : 0) : first_beyond(trace, regions_.Zb[j + 1]);
      const int first = rising ? below : above, end = rising ? above : below;
      if (first >= end) continue;
      const bool more = rising ? end < n : first > 0;
      lanes.next_region[lane] = more ? j + 1 : regions_.n;
      segments_.first[lane] = first;
      segments_.end[lane] = end;
      segments_.position[lane] = regions_.position(static_cast<int>(z + int64_t{sz} * first), j);
      segments_.step[lane] = regions_.step(sz, j);
      segments_.first_slice[lane] = regions_.first_slice[j];
      return true;
    }
    return false;
  }

  // The first sample of a ray that lies beyond a boundary: above it if rising, below if falling.
  int first_beyond(int trace, int boundary) const {
    const int sz = traces_.sz[trace], n = traces_.count[trace];
    const int64_t step = sz >= 1 ? sz : -int64_t{sz};
    const int64_t gap = sz >= 1 ? int64_t{boundary} - traces_.z[trace] : int64_t{traces_.z[trace]} - boundary;
    if (gap < 0) return 0;
    return gap >= step * (n - 1) ? n : static_cast<int>(gap / step) + 1;
  }

  // Walked from the end whose slice is lower; in 32 bits the way back comes to exactly the same positions.
  [[gnu::always_inline]] static inline void start_segment(CursorLanes& to, const Traces& t,
                                                          const SegmentLanes& s, int lane, int trace) {
    const int first = s.first[lane], last = s.end[lane] - 1, step = s.step[lane];
    const int back = step < 0 ? last - first : 0, sign = step < 0 ? -1 : 1, k = first + back;
    to.at.x[lane] = wrap_add(t.x[trace], wrap_mul(k, t.sx[trace]));
    to.at.y[lane] = wrap_add(t.y[trace], wrap_mul(k, t.sy[trace]));
    to.at.position[lane] = wrap_add(s.position[lane], wrap_mul(back, step));
    to.at.number[lane] = sample_number(t.ray[trace], k);
    to.step.x[lane] = wrap_mul(sign, t.sx[trace]);
    to.step.y[lane] = wrap_mul(sign, t.sy[trace]);
    to.step.position[lane] = wrap_mul(sign, step);
    to.step.number[lane] = sample_number(0, sign);
    to.last_number[lane] = sample_number(t.ray[trace], step < 0 ? first : last);
    to.first_slice[lane] = s.first_slice[lane];
    to.slice[lane] = slice_of<rules>(to.at.position[lane], to.first_slice[lane]);
  }

  void start_segments(CursorLanes& __restrict to) const {
    const Traces& __restrict t = traces_;
    const SegmentLanes& __restrict s = segments_;
    for (int i = 0; i < t.n; ++i) start_segment(to, t, s, i, i);
  }

  const Regions& regions_;
  const Traces& traces_;
  int n_ = 0;
  SegmentLanes segments_;  // the lanes' present ones
  Range x_, y_;            // what all rays reach
  bool inside_ = false;    // no sum wraps, and no ray leaves the stack: it may then leave the rows as well
};

}  // namespace
}  // namespace zox::ZOX_SET
