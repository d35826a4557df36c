// Rays through a slice stack in fixed point, and the z regions they pass.
#pragma once

#include "numbers/fixed_point.h"
#include "operations/rules.h"
#include "zox_volume.h"

namespace zox::ZOX_SET {
namespace {

// One ray as the slice-list operations walk it: every sum wraps in 32 bits.
struct Trace {
  int x, y, z;     // sample 0
  int sx, sy, sz;  // from one sample to the next
  int n;           // samples
};

template <GeneralRules rules>
[[gnu::always_inline]] inline Trace trace_of(const zox_Rays& batch, int r, bool one_region) {
  constexpr double scale = 1 << rules.bits;
  const double* start = batch.starts[r];
  const double* step = batch.steps[rules.step_of == StepOf::kRay0 ? 0 : r];
  double half = rules.start_half * 0.5;
  Trace t;
  t.x = to_fixed<rules.xy_start>(rules.start_half ? start[0] + half : start[0], scale);
  t.y = to_fixed<rules.xy_start>(rules.start_half ? start[1] + half : start[1], scale);
  t.z = to_fixed<rules.z>(start[2], scale);
  t.sx = one_region ? to_fixed<rules.step_one>(step[0], scale) : to_fixed<rules.step_many>(step[0], scale);
  t.sy = one_region ? to_fixed<rules.step_one>(step[1], scale) : to_fixed<rules.step_many>(step[1], scale);
  t.sz = to_fixed<rules.z>(step[2], scale);
  t.n = batch.nsamples[r];
  return t;
}

// The volume's regions with their boundaries Zb in fixed point.
struct Regions {
  int n;
  const int* Zb;
  const int32_t* first_slice;
  const double* scale;

  // A position inside region j, in slices from its first, of a ray at z; and what it moves by.
  int position(int z, int j) const { return truncate(static_cast<double>(wrap_sub(z, Zb[j])) * scale[j]); }
  int step(int sz, int j) const { return truncate(scale[j] * static_cast<double>(sz)); }
};

template <SliceRules rules>
int slice_of(int position, int first_slice) {
  constexpr int half = rules.half << (rules.bits - 1);
  return wrap_add(wrap_add(position, half) >> rules.bits, first_slice);
}

// Sample after sample through the regions. A sample exactly on a boundary stays in the lower
// region when the ray rises, in the upper one when it falls; a ray that does not rise falls.
// Past the ends of the table the walk stays in the last region it found.
class RegionWalk {
 public:
  RegionWalk(const Regions& regions, const Trace& trace)
      : regions_(regions),
        sz_(trace.sz),
        z_(trace.z),
        rising_(trace.sz >= 1),
        j_(regions.n == 1 || rising_ ? 0 : regions.n - 1) {
    rebase();
  }

  // Call once before each sample.
  void enter_region() {
    if (regions_.n == 1) return;
    int before = j_;
    if (rising_) {
      while (j_ + 1 < regions_.n && regions_.Zb[j_ + 1] < z_) ++j_;
    } else {
      while (j_ > 0 && z_ < regions_.Zb[j_]) --j_;
    }
    if (j_ != before) rebase();
  }

  void advance() {
    z_ = wrap_add(z_, sz_);
    position_ = wrap_add(position_, step_);
  }

  int position() const { return position_; }
  int first_slice() const { return regions_.first_slice[j_]; }

 private:
  void rebase() {
    position_ = regions_.position(z_, j_);
    step_ = regions_.step(sz_, j_);
  }

  const Regions& regions_;
  int sz_, z_;
  bool rising_;
  int j_;
  int position_ = 0, step_ = 0;
};

}  // namespace
}  // namespace zox::ZOX_SET
