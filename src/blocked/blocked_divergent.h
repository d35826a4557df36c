// Blocked volumes, every ray with its own step.
#pragma once

#include "blocked/blocked_sampling.h"
#include "numbers/march.h"

namespace zox::ZOX_SET {
namespace {

// A coordinate and a step as the walk carries them.
template <BlockedRules rules>
auto walk_step(double step) {
  if constexpr (rules.positions == Positions::kFixed) {
    return to_fixed<kTrunc>(step, 0x1p20);
  } else {
    return step;
  }
}

template <BlockedRules rules>
auto walk_start(double start) {
  return walk_step<rules>(rules.start_half ? start + 0.5 : start);
}

template <BlockedRules rules>
using PositionOf = decltype(walk_step<rules>(0.0));
template <BlockedRules rules>
using SamplerOf = BlockedSampler<rules.sampling, ElementOf<rules.voxel>, PositionOf<rules>>;

// Each ray walks from its own start, by the step at steps[r] or, parallel, by that of ray 0.
template <BlockedRules rules, StepOf step_of, class Sampler = SamplerOf<rules>, class Element>
void cast_ray_by_ray(const BlockedVolume<Element>& volume, const zox_Rays& batch) {
  Sampler sampler(volume);
  for (int first = 0, end; first < batch.nrays; first = end) {
    OwnWalk<PositionOf<rules>> walk;
    Marchers rays;
    end = batch.nrays - first < kLanes ? batch.nrays : first + kLanes;
    for (int r = first; r < end; ++r) {
      if (batch.nsamples[r] < 1) continue;
      const double* step = batch.steps[step_of == StepOf::kRay0 ? 0 : r];
      for (int axis = 0; axis < 3; ++axis) {
        walk.position[axis][rays.n] = walk_start<rules>(batch.starts[r][axis]);
        walk.step[axis][rays.n] = walk_step<rules>(step[axis]);
      }
      rays.add(r, batch.nsamples[r]);
    }
    march<Element>(rays, walk, batch.planes, sampler);
  }
}

template <BlockedRules rules>
int cast_blocked_divergent(const zox_Volume* volume, const zox_Rays* rays) {
  using Element = ElementOf<rules.voxel>;
  cast_ray_by_ray<rules, StepOf::kEachRay>(BlockedVolume<Element>(*volume), *rays);
  return ZOX_STS_NO_ERROR;
}

}  // namespace
}  // namespace zox::ZOX_SET
