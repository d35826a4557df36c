// Blocked volumes, all rays with the step of ray 0: walked ray by ray or, up to kMostSharedRays, sample
// by sample from a common base where that keeps reads closer together. The two differ in the
// last bit of a position.
#pragma once

#include "blocked/blocked_divergent.h"
#include "blocked/traversal.h"

namespace zox::ZOX_SET {
namespace {

template <BlockedRules rules, class Element, class Walk>
void cast_sample_by_sample(const BlockedVolume<Element>& volume, const zox_Rays& batch, Walk& walk) {
  BlockedSampler<rules.sampling, Element, typename Walk::Position> sampler(volume);
  Marchers rays;
  for (int r = 0; r < batch.nrays; ++r) {
    if (batch.nsamples[r] < 1) continue;
    if (rays.n != r) walk.move_lane(r, rays.n);
    rays.add(r, batch.nsamples[r]);
  }
  march<Element>(rays, walk, batch.planes, sampler);
}

// Positions in doubles: offsets from the start of ray 0 and a base that starts there.
template <BlockedRules rules, class Element>
bool cast_from_real_base(const BlockedVolume<Element>& volume, const zox_Rays& batch) {
  SharedWalk walk;
  for (int axis = 0; axis < 3; ++axis) {
    double start = batch.starts[0][axis];
    for (int r = 0; r < batch.nrays; ++r) walk.offset[axis][r] = batch.starts[r][axis] - start;
    walk.base[axis] = walk_start<rules>(start);
    walk.step[axis] = batch.steps[0][axis];
  }
  if (!sample_by_sample<rules.x_weight>(walk.step, walk.offset, batch.nrays, 1.0)) return false;
  cast_sample_by_sample<rules>(volume, batch, walk);
  return true;
}

// Positions in fixed point: an offset is truncated after subtracting the base, so a start below
// that of ray 0 may come out one unit higher than its own truncation. Integer sums are exact:
// base plus offset may be formed once and walk on as a lane of its own.
template <BlockedRules rules, class Element>
bool cast_from_fixed_base(const BlockedVolume<Element>& volume, const zox_Rays& batch) {
  Axes<int> offset;
  OwnWalk<int> walk;
  for (int axis = 0; axis < 3; ++axis) {
    int base = walk_start<rules>(batch.starts[0][axis]);
    int step = walk_step<rules>(batch.steps[0][axis]);
    for (int r = 0; r < batch.nrays; ++r) {
      offset[axis][r] = truncate(batch.starts[r][axis] * 0x1p20 - base);
      walk.position[axis][r] = wrap_add(base, offset[axis][r]);
      walk.step[axis][r] = step;
    }
  }
  if (!sample_by_sample<rules.x_weight>(batch.steps[0], offset, batch.nrays, 0x1p-20)) return false;
  cast_sample_by_sample<rules>(volume, batch, walk);
  return true;
}

template <BlockedRules rules>
int cast_blocked_parallel(const zox_Volume* volume, const zox_Rays* rays) {
  using Element = ElementOf<rules.voxel>;
  if (rays->nrays < 1) return ZOX_STS_NO_ERROR;
  BlockedVolume<Element> blocked(*volume);
  bool done = false;
  static_assert(kMostSharedRays <= kLanes);
  if (rays->nrays <= kMostSharedRays) {
    if constexpr (rules.positions == Positions::kFixed) {
      done = cast_from_fixed_base<rules>(blocked, *rays);
    } else {
      done = cast_from_real_base<rules>(blocked, *rays);
    }
  }
  if (!done) cast_ray_by_ray<rules, StepOf::kRay0>(blocked, *rays);
  return ZOX_STS_NO_ERROR;
}

}  // namespace
}  // namespace zox::ZOX_SET
