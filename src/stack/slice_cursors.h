// The samples of a batch in slice order without lists: z runs one way along a ray, so a cursor a
// ray yields them as the sweep asks for slice after slice.
#pragma once

#include "stack/rays_in_step.h"

namespace zox::ZOX_SET {
namespace {

template <SliceRules rules>
class SliceCursors {
 public:
  SliceCursors(RayCursors<rules>& cursors, StackView& view, const StageSink& sink)
      : cursors_(cursors), in_step_(cursors), view_(view), sink_(sink), stage_(sink.take(false)) {}

  // Appends every sample of the lowest slice that any cursor stands at, until none is left below
  // `nslices`. Samples below slice 0 are passed over.
  void sweep(int nslices) {
    const bool flat = cursors_.flat() && cursors_.longest() >= in_step_.shortest();
    int next_try = 0, wait = 2, idle = 0;
    for (int s = cursors_.lowest_slice(); s < nslices;) {
      if (s >= next_try) {
        next_try = flat ? s + 1 : s + wait;
        if (wait < kLongestWait) wait *= 4;
        if (flat ? staged_in_slice(s) : staged_in_step(s, nslices)) {
          next_try = s = cursors_.lowest_slice();
          wait = 2;
          continue;
        }
      }
      if (s >= 0) enter_slice(cursors_.even(view_, {s, s}));
      Vector next = broadcast(kNoSlice);
      for (int group = 0; group < cursors_.count(); group += kVector) {
        next = smaller(next, stage_->even ? append_group<true>(s, group) : append_group<false>(s, group));
      }
      if (done_ >= kVector && (idle += done_) > kMostIdle) {
        cursors_.drop_done();
        idle = done_ = 0;
      }
      ++s;  // mostly some ray is there
      if (bits_of(equal(next, broadcast(s))) == 0) s = lowest_of(next);
    }
  }

 private:
  // Rays that are not in step are swept slice by slice and looked at again after 2, 8, 32 slices and so on.
  // A try costs less than two slices do: rays that never go together lose about a hundredth.
  static constexpr int kLongestWait = 128;
  // Closing gaps costs about as much as so many lanes of rays that are done, slice after slice.
  static constexpr int kMostIdle = 256;

  // Apart from the sweep, which then keeps more in registers.
  [[gnu::noinline]] bool staged_in_step(int s, int nslices) {
    if (!in_step_.choose_all(nslices)) return false;
    enter_slice(cursors_.even(view_, {s, in_step_.highest_slice()}));
    in_step_.stage_all(stage_, view_, sink_);
    return true;
  }

  // The rays at slice s together, else those that stay in it for long one after the other.
  [[gnu::noinline]] bool staged_in_slice(int s) {
    enter_slice(cursors_.even(view_, {s, s}));
    const int rays = cursors_.count();
    const bool together = in_step_.choose_in_slice(s, 0, rays);
    if (together) in_step_.stage_all(stage_, view_, sink_);
    for (int i = 0; !together && i < rays; ++i) {
      if (in_step_.choose_in_slice(s, i, i + 1)) in_step_.stage_all(stage_, view_, sink_);
    }
    return together;
  }

  void enter_slice(bool even) {
    if (stage_->even == even) return;
    if (stage_->n > 0) stage_ = sink_.take(even);
    stage_->even = even;
  }

  // Appends the samples of slice s of one vector's lanes and moves these on; the slices at which
  // they then stand.
  template <bool even>
  Vector append_group(int s, int group);

  RayCursors<rules>& cursors_;
  RaysInStep<rules> in_step_;
  StackView& view_;
  const StageSink& sink_;
  StagedSamples* stage_;
  int done_ = 0;  // rays, since the gaps were closed that others had left
};

template <SliceRules rules>
template <bool even>
Vector SliceCursors<rules>::append_group(int s, int group) {
  CursorLanes& lanes = cursors_.lanes;
  const Vector wanted = broadcast(s), none = broadcast(kNoSlice);
  Vector slice = load<Vector>(&lanes.slice[group]);
  Mask on = equal(slice, wanted);
  if (bits_of(on) == 0) return slice;
  SampleVectors at = SampleVectors::of(lanes.at, group);
  StagedSamples* stage = stage_;
  int n = stage->n;
  for (unsigned bits; (bits = bits_of(on)) != 0; on = equal(slice, wanted)) {
    const Packing packed(bits);
    view_.template stage<even, !rules.half>(*stage, n, at, wanted,
                                            [&](int* to, Vector v) { packed.append(to, v); });
    n += s >= 0 ? __builtin_popcount(bits) : 0;
    const Mask ended = on & equal(at.number, load<Vector>(&lanes.last_number[group]));
    at.move_where(on, SampleVectors::of(lanes.step, group));
    slice = select(on, slices_of<rules>(at.position, load<Vector>(&lanes.first_slice[group])), slice);
    slice = select(ended, none, slice);
    if (const unsigned lanes_ended = bits_of(ended); lanes_ended != 0) {
      if (!cursors_.one_region()) {
        at.put_back(lanes.at, group);
        store(&lanes.slice[group], slice);
        for (unsigned left = lanes_ended; left != 0; left &= left - 1)
          cursors_.enter_region(group + __builtin_ctz(left));
        at = SampleVectors::of(lanes.at, group);
        slice = load<Vector>(&lanes.slice[group]);
      }
      done_ += __builtin_popcount(lanes_ended & bits_of(equal(slice, none)));
    }
    if (StagedSamples::full(n)) {
      stage->n = n;
      stage_ = stage = sink_.take(even);
      n = 0;
    }
  }
  stage->n = n;
  at.put_back(lanes.at, group);
  store(&lanes.slice[group], slice);
  return slice;
}

}  // namespace
}  // namespace zox::ZOX_SET
