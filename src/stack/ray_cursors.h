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
  explicit RayCursors(const Regions& regions) : regions_(regions) {
    for (int i = 0; i < kLanes; ++i) lanes.slice[i] = kNoSlice;
  }

  // Whether region after region leads to higher slices only, and neither a distance in a region nor
  // a position can overflow.
  static bool regions_ascend(const Regions& regions) {
    if (regions.n == 1) return true;
    for (int j = 0; j < regions.n; ++j) {
      int64_t depth = int64_t{regions.Zb[j + 1]} - regions.Zb[j];
      if (depth < 0 || depth + kSlack > INT32_MAX) return false;
      double last_position = static_cast<double>(depth + kSlack) * regions.scale[j];
      if (!(regions.scale[j] >= 0 && last_position < kLargestPosition)) return false;
      int last =
          slice_of<rules>(truncate(static_cast<double>(depth) * regions.scale[j]), regions.first_slice[j]);
      if (j + 1 < regions.n && last > regions.first_slice[j + 1]) return false;
    }
    return true;
  }

  // Adds the ray as the next lane. False if its z leaves the range in which it runs one way.
  bool add(const Trace& trace, int ray) {
    reach.include(trace, regions_);
    int lane = n_++;
    ray_[lane] = ray;
    if (regions_.n == 1) return enter_only_region(lane, trace);
    trace_[lane] = trace;
    return enter_first_region(lane);
  }

  int lowest_slice() const {
    int lowest = kNoSlice;
    for (int i = 0; i < padded(n_); ++i) lowest = lanes.slice[i] < lowest ? lanes.slice[i] : lowest;
    return lowest;
  }

  // Sets the lane to the lowest sample in the next region, upwards, that holds any.
  void enter_region(int lane) {
    const Trace& t = trace_[lane];
    bool rising = t.sz >= 1;
    lanes.slice[lane] = kNoSlice;
    for (int j = region_[lane]; j < regions_.n; ++j) {
      int below = j == 0 ? (rising ? 0 : t.n) : first_beyond(t, regions_.Zb[j]);
      int above = j == regions_.n - 1 ? (rising ? t.n : 0) : first_beyond(t, regions_.Zb[j + 1]);
      int first = rising ? below : above, end = rising ? above : below;
      if (first >= end) continue;
      bool more = rising ? end < t.n : first > 0;
      region_[lane] = more ? j + 1 : regions_.n;
      int z = static_cast<int>(t.z + int64_t{t.sz} * first);
      start_segment(lane, t, j, regions_.position(z, j), regions_.step(t.sz, j), first, end);
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
    if (ended && regions_.n > 1) enter_region(lane);
  }

  // Whether every ray has eight samples or more in a slice.
  bool flat() const {
    int steepest = 0;
    for (int i = 0; i < n_; ++i)
      steepest = lanes.position_step[i] > steepest ? lanes.position_step[i] : steepest;
    return steepest <= 1 << (rules.bits - 3);
  }

  int count() const { return n_; }
  bool one_region() const { return regions_.n == 1; }

  CursorLanes lanes;
  Reach reach;

 private:
  // How far beyond the regions z may be: a rounded step is off by half a unit at most, and a trilinear ray
  // has less than 2^21 of them; truncated steps fall short.
  static constexpr int64_t kSlack = 1 << rules.bits;
  // Leaves room for the half slice, 2^20, that rounding adds.
  static constexpr int kLargestPosition = INT32_MAX - (1 << 22);

  bool enter_only_region(int lane, const Trace& t) {
    int position = regions_.position(t.z, 0), step = regions_.step(t.sz, 0);
    int64_t last = position + int64_t{step} * (t.n - 1);
    if (position > kLargestPosition || last > kLargestPosition || last < INT32_MIN) return false;
    start_segment(lane, t, 0, position, step, 0, t.n);
    return true;
  }

  bool enter_first_region(int lane) {
    const Trace& t = trace_[lane];
    int64_t last = t.z + int64_t{t.sz} * (t.n - 1);
    int64_t low = last < t.z ? last : t.z, high = last < t.z ? t.z : last;
    if (low < regions_.Zb[0] - kSlack || high > regions_.Zb[regions_.n] + kSlack) return false;
    if (low < INT32_MIN || high > INT32_MAX) return false;
    int j = 0;
    if (t.sz >= 1) {
      while (j + 1 < regions_.n && regions_.Zb[j + 1] < low) ++j;
    } else {
      while (j + 1 < regions_.n && regions_.Zb[j + 1] <= low) ++j;
    }
    region_[lane] = j;
    enter_region(lane);
    return true;
  }

  // The first sample of a ray that lies beyond a boundary: above it if rising, below if falling.
  static int first_beyond(const Trace& t, int boundary) {
    bool rising = t.sz >= 1;
    int64_t gap = rising ? int64_t{boundary} - t.z : int64_t{t.z} - boundary;
    if (gap < 0) return 0;
    if (t.sz == 0) return t.n;
    int64_t k = gap / (rising ? t.sz : -int64_t{t.sz}) + 1;
    return k < t.n ? static_cast<int>(k) : t.n;
  }

  // Samples first .. end - 1 lie in region j, the first at `position`. Walked from the end whose
  // slice is lower; in 32 bits the way back comes to exactly the same positions.
  void start_segment(int lane, const Trace& t, int j, int position, int step, int first, int end) {
    int back = step < 0 ? end - 1 - first : 0, sign = step < 0 ? -1 : 1;
    int k = first + back;
    lanes.x[lane] = wrap_add(t.x, wrap_mul(k, t.sx));
    lanes.y[lane] = wrap_add(t.y, wrap_mul(k, t.sy));
    lanes.position[lane] = wrap_add(position, wrap_mul(back, step));
    lanes.number[lane] = sample_number(ray_[lane], k);
    lanes.x_step[lane] = wrap_mul(sign, t.sx);
    lanes.y_step[lane] = wrap_mul(sign, t.sy);
    lanes.position_step[lane] = wrap_mul(sign, step);
    lanes.number_step[lane] = sample_number(0, sign);
    lanes.last_number[lane] = sample_number(ray_[lane], step < 0 ? first : end - 1);
    lanes.first_slice[lane] = regions_.first_slice[j];
    lanes.slice[lane] = slice_of<rules>(lanes.position[lane], lanes.first_slice[lane]);
  }

  const Regions& regions_;
  int n_ = 0;
  Trace trace_[kLanes];
  int ray_[kLanes];
  int region_[kLanes];  // the one to enter next
};

}  // namespace
}  // namespace zox::ZOX_SET
