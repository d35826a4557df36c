// Rays through a slice stack in fixed point, and the z regions they pass.
#pragma once

#include "numbers/fixed_point.h"
#include "operations/rules.h"
#include "zox_volume.h"

namespace zox::ZOX_SET {
namespace {

// The rays that have samples, as the slice-list operations walk them: every sum wraps in 32 bits.
struct Traces {
  int n = 0;
  Lanes<int> x, y, z;     // sample 0
  Lanes<int> sx, sy, sz;  // from one sample to the next
  Lanes<int> count;       // samples
  Lanes<int> ray;
};

template <GeneralRules rules>
void trace_rays(const zox_Rays& batch, bool one_region, Traces& to) {
  constexpr double scale = 1 << rules.bits, half = rules.start_half * 0.5;
  constexpr Rounding step_one = rules.step_one, step_many = rules.step_many;
  Axes<double> start, step;
  for (int r = 0; r < batch.nrays; ++r) {
    if (batch.nsamples[r] < 1) continue;  // its start may be anything
    for (int axis = 0; axis < 3; ++axis) {
      start[axis][to.n] = batch.starts[r][axis];
      step[axis][to.n] = batch.steps[rules.step_of == StepOf::kRay0 ? 0 : r][axis];
    }
    to.count[to.n] = batch.nsamples[r];
    to.ray[to.n++] = r;
  }
  pad_lanes(start, to.n);
  pad_lanes(step, to.n);
  to_fixed_lanes<rules.xy_start>(start[0], half, scale, to.x, to.n);
  to_fixed_lanes<rules.xy_start>(start[1], half, scale, to.y, to.n);
  to_fixed_lanes<rules.z>(start[2], 0.0, scale, to.z, to.n);
  auto steps_of = one_region ? to_fixed_lanes<step_one> : to_fixed_lanes<step_many>;
  steps_of(step[0], 0.0, scale, to.sx, to.n);
  steps_of(step[1], 0.0, scale, to.sy, to.n);
  to_fixed_lanes<rules.z>(step[2], 0.0, scale, to.sz, to.n);
}

// The volume's regions with their boundaries Zb in fixed point.
struct Regions {
  int n;
  const int* Zb;
  const int32_t* first_slice;
  const double* scale;

  // A position inside region j, in slices from its first, of a ray at z; and what it moves by.
  double distance(int z, int j) const { return static_cast<double>(wrap_sub(z, Zb[j])); }
  int position(int z, int j) const { return truncate(distance(z, j) * scale[j]); }
  int step(int sz, int j) const { return truncate(scale[j] * static_cast<double>(sz)); }
};

template <SliceRules rules>
constexpr int kHalfSlice = rules.half << (rules.bits - 1);

template <SliceRules rules>
int slice_of(int position, int first_slice) {
  return wrap_add(wrap_add(position, kHalfSlice<rules>) >> rules.bits, first_slice);
}
template <SliceRules rules>
Vector slices_of(Vector position, Vector first_slice) {
  return shift_right(position + broadcast(kHalfSlice<rules>), rules.bits) + first_slice;
}

// Sample after sample through the regions. A sample exactly on a boundary stays in the lower
// region when the ray rises, in the upper one when it falls; a ray that does not rise falls.
// Past the ends of the table the walk stays in the last region it found.
class RegionWalk {
 public:
  RegionWalk(const Regions& regions, int z, int sz)
      : regions_(regions),
        sz_(sz),
        z_(z),
        rising_(sz >= 1),
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
