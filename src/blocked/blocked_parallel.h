// Blocked volumes, all rays with the step of ray 0: walked ray by ray or, up to kMostSharedRays, sample
// by sample from a common base where that keeps reads closer together. The two differ in the
// last bit of a position.
#pragma once

#include "blocked/blocked_divergent.h"
#include "blocked/traversal.h"

namespace zox::ZOX_SET {
namespace {

// A start's distance from that of ray 0. In fixed point it is truncated after subtracting the base, so a
// start below that of ray 0 may come out one unit higher than its own truncation.
inline double offset_from(double start, double start_0, double) { return start - start_0; }
inline int offset_from(double start, double, int base) { return truncate(start * 0x1p20 - base); }

// False where the rays are to be walked ray by ray: nothing is written.
template <BlockedRules rules, class Element>
bool cast_sample_by_sample(const BlockedVolume<Element>& volume, const zox_Rays& batch) {
  SharedWalk<PositionOf<rules>> walk;
  for (int axis = 0; axis < 3; ++axis) {
    const double start = batch.starts[0][axis];
    walk.base[axis] = walk_start<rules>(start);
    walk.step[axis] = walk_step<rules>(batch.steps[0][axis]);
    for (int r = 0; r < batch.nrays; ++r)
      walk.offset[axis][r] = offset_from(batch.starts[r][axis], start, walk.base[axis]);
  }
  constexpr double unit = rules.positions == Positions::kFixed ? 0x1p-20 : 1.0;
  if (!sample_by_sample<rules.x_weight>(batch.steps[0], walk.offset, batch.nrays, unit)) return false;
  SamplerOf<rules> sampler(volume);
  Marchers rays;
  for (int r = 0; r < batch.nrays; ++r) {
    if (batch.nsamples[r] < 1) continue;
    if (rays.n != r) walk.move_lane(r, rays.n);
    rays.add(r, batch.nsamples[r]);
  }
  march<Element>(rays, walk, batch.planes, sampler);
  return true;
}

template <BlockedRules rules>
int cast_blocked_parallel(const zox_Volume* volume, const zox_Rays* rays) {
  using Element = ElementOf<rules.voxel>;
  if (rays->nrays < 1) return ZOX_STS_NO_ERROR;
  BlockedVolume<Element> blocked(*volume);
  static_assert(kMostSharedRays <= kLanes);
  bool done = rays->nrays <= kMostSharedRays && cast_sample_by_sample<rules>(blocked, *rays);
  if (!done) cast_ray_by_ray<rules, StepOf::kRay0>(blocked, *rays);
  return ZOX_STS_NO_ERROR;
}

}  // namespace
}  // namespace zox::ZOX_SET
