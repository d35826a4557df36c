// The samples of a batch in slice order without lists: z runs one way along a ray, so a cursor a
// ray, turned so that its slices ascend, yields them as the sweep asks for slice after slice.
#pragma once

#include "stack/cursor_lanes.h"
#include "stack/region_walk.h"
#include "stack/stack_view.h"

namespace zox::ZOX_SET {
namespace {

template <SliceRules rules>
class SliceCursors {
 public:
  explicit SliceCursors(const Regions& regions) : regions_(regions) {
    for (int i = 0; i < kLanes; ++i) lanes_.slice[i] = kNoSlice;
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
    reach_.include(trace, regions_);
    int lane = n_++;
    ray_[lane] = ray;
    if (regions_.n == 1) return enter_only_region(lane, trace);
    trace_[lane] = trace;
    return enter_first_region(lane);
  }

  // Appends every sample of the lowest slice that any cursor stands at, until none is left below
  // `nslices`. Samples below slice 0 are passed over.
  void sweep(int nslices, StackView& view, const StageSink& sink) {
    stage_ = sink.take();
    if (n_ == 1) return follow_one(nslices, view, sink);
    for (int s = lowest_slice(); s < nslices;) {
      if (s >= 0) enter_slice(reach_.even(view, {s, s}), sink);
      Vector next = broadcast(kNoSlice);
      for (int group = 0; group < n_; group += kVector) {
        next = smaller(next, stage_->even ? append_group<true>(s, group, view, sink)
                                          : append_group<false>(s, group, view, sink));
      }
      ++s;  // mostly some ray is there
      if (bits_of(equal(next, broadcast(s))) == 0) s = lowest_of(next);
    }
  }

 private:
  // How far beyond the regions z may be: a rounded step is off by half a unit at most, and a trilinear ray
  // has less than 2^21 of them; truncated steps fall short.
  static constexpr int64_t kSlack = 1 << rules.bits;
  // Leaves room for the half slice, 2^20, that rounding adds.
  static constexpr int kLargestPosition = INT32_MAX - (1 << 22);
  static constexpr int kHalf = rules.half << (rules.bits - 1);

  void enter_slice(bool even, const StageSink& sink) {
    if (stage_->even == even) return;
    if (stage_->n > 0) stage_ = sink.take();
    stage_->even = even;
  }

  int lowest_slice() const {
    int lowest = kNoSlice;
    for (int i = 0; i < padded(n_); ++i) lowest = lanes_.slice[i] < lowest ? lanes_.slice[i] : lowest;
    return lowest;
  }

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

  // Sets the lane to the lowest sample in the next region, upwards, that holds any.
  void enter_region(int lane) {
    const Trace& t = trace_[lane];
    bool rising = t.sz >= 1;
    lanes_.slice[lane] = kNoSlice;
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

  // Samples first .. end - 1 lie in region j, the first at `position`. Walked from the end whose
  // slice is lower; in 32 bits the way back comes to exactly the same positions.
  void start_segment(int lane, const Trace& t, int j, int position, int step, int first, int end) {
    int back = step < 0 ? end - 1 - first : 0, sign = step < 0 ? -1 : 1;
    int k = first + back;
    lanes_.x[lane] = wrap_add(t.x, wrap_mul(k, t.sx));
    lanes_.y[lane] = wrap_add(t.y, wrap_mul(k, t.sy));
    lanes_.position[lane] = wrap_add(position, wrap_mul(back, step));
    lanes_.number[lane] = sample_number(ray_[lane], k);
    lanes_.x_step[lane] = wrap_mul(sign, t.sx);
    lanes_.y_step[lane] = wrap_mul(sign, t.sy);
    lanes_.position_step[lane] = wrap_mul(sign, step);
    lanes_.number_step[lane] = sample_number(0, sign);
    lanes_.last_number[lane] = sample_number(ray_[lane], step < 0 ? first : end - 1);
    lanes_.first_slice[lane] = regions_.first_slice[j];
    lanes_.slice[lane] = slice_of<rules>(lanes_.position[lane], lanes_.first_slice[lane]);
  }

  // sweep() for a ray that is alone: it is in slice order as it stands.
  void follow_one(int nslices, StackView& view, const StageSink& sink) {
    while (lanes_.slice[0] < nslices) {
      StagedSamples& stage = *stage_;
      int left = (lanes_.last_number[0] - lanes_.number[0]) / lanes_.number_step[0] + 1;
      int n = left < kStage ? left : kStage;
      stage_run<rules>(lanes_, n, stage);
      advance_one(n, n == left);
      int below = 0;
      while (below < n && stage.place[below] < 0) ++below;
      while (n > below && stage.place[n - 1] >= nslices) --n;
      if (below > 0) stage.drop_first(below, n);
      stage.n = n - below;
      if (stage.n == 0) continue;
      stage.even = reach_.even(view, {stage.place[0], stage.place[stage.n - 1]});
      if (stage.even) view.place_evenly(stage, 0, stage.n);
      stage_ = sink.take();
    }
  }

  void advance_one(int n, bool ended) {
    lanes_.advance_first(n);
    lanes_.slice[0] = ended ? kNoSlice : slice_of<rules>(lanes_.position[0], lanes_.first_slice[0]);
    if (ended && regions_.n > 1) enter_region(0);
  }

  // Appends the samples of slice s of one vector's lanes and moves these on; the slices at which
  // they then stand.
  template <bool even>
  Vector append_group(int s, int group, const StackView& view, const StageSink& sink);

  const Regions& regions_;
  CursorLanes lanes_;
  int n_ = 0;
  Reach reach_;
  StagedSamples* stage_ = nullptr;
  Trace trace_[kLanes];
  int ray_[kLanes];
  int region_[kLanes];  // the one to enter next
};

template <SliceRules rules>
template <bool even>
Vector SliceCursors<rules>::append_group(int s, int group, const StackView& view, const StageSink& sink) {
  const Vector wanted = broadcast(s), none = broadcast(kNoSlice);
  Mask on = equal(load_vector(&lanes_.slice[group]), wanted);
  if (bits_of(on) == 0) return load_vector(&lanes_.slice[group]);
  const Vector place = even ? view.slice_start(wanted) : wanted;
  CursorGroup c(lanes_, group);
  StagedSamples* stage = stage_;
  int n = stage->n;
  for (unsigned bits; (bits = bits_of(on)) != 0; on = equal(c.slice, wanted)) {
    Packing packed(bits);
    if constexpr (even) {
      packed.append(stage->place + n, view.offset(c.x, c.y, place));
    } else {
      store_anywhere(stage->place + n, place);
    }
    if (!even || !rules.half || view.bits_are_read) packed.append(stage->x + n, c.x);
    if (!even || !rules.half) packed.append(stage->y + n, c.y);
    if constexpr (!rules.half) packed.append(stage->position + n, c.position);
    packed.append(stage->number + n, c.number);
    n += s >= 0 ? __builtin_popcount(bits) : 0;
    Mask ended = both(on, equal(c.number, load_vector(&lanes_.last_number[group])));
    c.x = add_where(on, c.x, load_vector(&lanes_.x_step[group]));
    c.y = add_where(on, c.y, load_vector(&lanes_.y_step[group]));
    c.position = add_where(on, c.position, load_vector(&lanes_.position_step[group]));
    c.number = add_where(on, c.number, load_vector(&lanes_.number_step[group]));
    Vector rounded = shift_right<rules.bits>(sum(c.position, broadcast(kHalf)));
    c.slice = select(on, sum(rounded, load_vector(&lanes_.first_slice[group])), c.slice);
    c.slice = select(ended, none, c.slice);
    unsigned lanes_ended = bits_of(ended);
    if (lanes_ended != 0 && regions_.n > 1) {
      c.put_back(lanes_, group);
      for (; lanes_ended != 0; lanes_ended &= lanes_ended - 1)
        enter_region(group + __builtin_ctz(lanes_ended));
      c = CursorGroup(lanes_, group);
    }
    if (StagedSamples::full(n)) {
      stage->n = n;
      stage_ = stage = sink.take();
      stage->even = even;
      n = 0;
    }
  }
  stage->n = n;
  c.put_back(lanes_, group);
  return c.slice;
}

}  // namespace
}  // namespace zox::ZOX_SET
