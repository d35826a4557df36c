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
      : cursors_(cursors), in_step_(cursors), view_(view), sink_(sink), stage_(sink.take()) {}

  // Appends every sample of the lowest slice that any cursor stands at, until none is left below
  // `nslices`. Samples below slice 0 are passed over.
  void sweep(int nslices) {
    const bool flat = cursors_.flat();
    int next_try = 0, wait = 2;
    for (int s = cursors_.lowest_slice(); s < nslices;) {
      if (s >= next_try) {
        next_try = flat ? s + 1 : s + wait;
        if (wait < kLongestWait) wait *= 4;
        if (staged_in_step(flat, s, nslices)) {
          next_try = s = cursors_.lowest_slice();
          wait = 2;
          continue;
        }
      }
      if (s >= 0) enter_slice(cursors_.reach.even(view_, {s, s}));
      Vector next = broadcast(kNoSlice);
      for (int group = 0; group < cursors_.count(); group += kVector) {
        next = smaller(next, stage_->even ? append_group<true>(s, group) : append_group<false>(s, group));
      }
      ++s;  // mostly some ray is there
      if (bits_of(equal(next, broadcast(s))) == 0) s = lowest_of(next);
    }
  }

 private:
  // Rays that are not in step are swept slice by slice and looked at again after 2, 8, 32 slices and so on.
  static constexpr int kLongestWait = 128;
  static constexpr int kHalf = rules.half << (rules.bits - 1);

  // Apart from the sweep, which then keeps more in registers.
  [[gnu::noinline]] bool staged_in_step(bool flat, int s, int nslices) {
    if (flat ? !in_step_.choose_in_slice(s) : !in_step_.choose_all(nslices)) return false;
    enter_slice(cursors_.reach.even(view_, {s, in_step_.highest_slice()}));
    in_step_.stage_all(stage_, view_, sink_);
    return true;
  }

  void enter_slice(bool even) {
    if (stage_->even == even) return;
    if (stage_->n > 0) stage_ = sink_.take();
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
};

template <SliceRules rules>
template <bool even>
Vector SliceCursors<rules>::append_group(int s, int group) {
  CursorLanes& lanes = cursors_.lanes;
  const StackView& view = view_;
  const Vector wanted = broadcast(s), none = broadcast(kNoSlice);
  Mask on = equal(load_vector(&lanes.slice[group]), wanted);
  if (bits_of(on) == 0) return load_vector(&lanes.slice[group]);
  const Vector place = even ? view.slice_start(wanted) : wanted;
  CursorGroup c(lanes, group);
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
    Mask ended = both(on, equal(c.number, load_vector(&lanes.last_number[group])));
    c.x = add_where(on, c.x, load_vector(&lanes.x_step[group]));
    c.y = add_where(on, c.y, load_vector(&lanes.y_step[group]));
    c.position = add_where(on, c.position, load_vector(&lanes.position_step[group]));
    c.number = add_where(on, c.number, load_vector(&lanes.number_step[group]));
    Vector rounded = shift_right<rules.bits>(sum(c.position, broadcast(kHalf)));
    c.slice = select(on, sum(rounded, load_vector(&lanes.first_slice[group])), c.slice);
    c.slice = select(ended, none, c.slice);
    unsigned lanes_ended = bits_of(ended);
    if (lanes_ended != 0 && !cursors_.one_region()) {
      c.put_back(lanes, group);
      for (; lanes_ended != 0; lanes_ended &= lanes_ended - 1)
        cursors_.enter_region(group + __builtin_ctz(lanes_ended));
      c = CursorGroup(lanes, group);
    }
    if (StagedSamples::full(n)) {
      stage->n = n;
      stage_ = stage = sink_.take();
      stage->even = even;
      n = 0;
    }
  }
  stage->n = n;
  c.put_back(lanes, group);
  return c.slice;
}

}  // namespace
}  // namespace zox::ZOX_SET
