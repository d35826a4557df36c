// Slice stacks, parallel nearest: the choice between one region and many, and the one-region
// path, which needs no lists: starts lie close together in z, so the batch moves through the
// slices as one.
#pragma once

#include "engine/march.h"
#include "engine/stack_sampling.h"

namespace zox::ZOX_SET {
namespace {

struct Spread {
  double z = 0.0;  // how far, at most, a start lies from that of ray 0
  int min_samples = INT32_MAX;
  int max_samples = -1;
};

inline Spread spread_of(const zox_Rays& batch) {
  Spread s;
  s.max_samples = s.min_samples = batch.nsamples[0];
  for (int r = 0; r < batch.nrays; ++r) {
    double z = batch.starts[r][2] - batch.starts[0][2];
    if (z < 0) z = -z;
    if (z > s.z) s.z = z;
    if (batch.nsamples[r] < s.min_samples) s.min_samples = batch.nsamples[r];
    if (batch.nsamples[r] > s.max_samples) s.max_samples = batch.nsamples[r];
  }
  return s;
}

// What a ray adds to the position of ray 0, in fixed point, and the half that makes indices round.
struct RayOffsets {
  Lanes<int> x, y, slice, ray;

  void move_lane(int from, int to) {
    x[to] = x[from];
    y[to] = y[from];
    slice[to] = slice[from];
    ray[to] = ray[from];
  }
};

// Appends sample k of n rays, ray 0 being at `at`.
inline void append_samples(const RayOffsets& offsets, const int (&at)[3], int k, int n,
                           StagedSamples& stage) {
  int *x = stage.x + stage.n, *y = stage.y + stage.n, *slice = stage.slice + stage.n,
      *node = stage.node + stage.n;
  auto append = [&](int i) {
    x[i] = wrap_add(offsets.x[i], at[0]);
    y[i] = wrap_add(offsets.y[i], at[1]);
    slice[i] = wrap_add(offsets.slice[i], at[2]) >> 21;
    node[i] = offsets.ray[i] + 64 * k;
  };
  if (n == 1) {
    append(0);
  } else {
    for (int i = 0; i < padded(n); ++i) append(i);
  }
  stage.n += n;
}

// The position of ray 0 runs in doubles and is converted once a sample for all rays.
template <FetchRules rules>
int cast_one_region(const zox_Rays& batch, int nrays, int max_samples, const zox_Volume& volume) {
  constexpr double scale = 0x1p21;
  constexpr int half = 1 << 20;
  const double* start = batch.starts[0];
  double slices_per_z = volume.regscale[0];
  double step[3] = {batch.steps[0][0], batch.steps[0][1], batch.steps[0][2] * slices_per_z};
  double base[3] = {start[0], start[1], slices_per_z * (start[2] - volume.regbounds[0])};
  Marchers rays;
  RayOffsets offsets;
  for (int r = 0; r < nrays; ++r) {
    if (batch.nsamples[r] < 1) continue;
    const double* s = batch.starts[r];
    offsets.x[rays.n] = wrap_add(truncate((s[0] - start[0]) * scale), half);
    offsets.y[rays.n] = wrap_add(truncate((s[1] - start[1]) * scale), half);
    offsets.slice[rays.n] = wrap_add(truncate(((s[2] - start[2]) * slices_per_z) * scale), half);
    offsets.ray[rays.n] = r;
    rays.add(r, batch.nsamples[r]);
  }
  StackView view(volume, 0);
  StagedSamples stage;
  for (int k = 0; k < max_samples; rays.drop_ended(k, offsets)) {
    for (int end = rays.first_end(); k < end; ++k) {
      int at[3];
      for (int axis = 0; axis < 3; ++axis) {
        at[axis] = truncate(base[axis] * scale);
        base[axis] += step[axis];
      }
      append_samples(offsets, at, k, rays.n, stage);
      if (stage.n > kStage - kLanes) flush_stage<rules>(view, stage, batch.planes);
    }
  }
  flush_stage<rules>(view, stage, batch.planes);
  return ZOX_STS_NO_ERROR;
}

using OneRegionRoutine = int (*)(const zox_Rays*, int nrays, int min_samples, int max_samples,
                                 const zox_Volume*);
using MultiRegionRoutine = int (*)(const zox_Rays*, int nrays, int max_samples, const zox_Volume*);

// One region, and all starts within a fifth of its depth from that of ray 0: the one-region
// routine. At exactly a fifth, and for whatever is not a number, the other.
template <OneRegionRoutine one_region, MultiRegionRoutine multi_region>
int cast_parallel_nearest(const zox_Volume* volume, const zox_Rays* rays) {
  if (rays->nrays < 1) return ZOX_STS_NO_ERROR;
  Spread spread = spread_of(*rays);
  const double* bounds = volume->regbounds;
  if (volume->nregions == 1 && (bounds[1] - bounds[0]) * 0.2 > spread.z) {
    return one_region(rays, rays->nrays, spread.min_samples, spread.max_samples, volume);
  }
  return multi_region(rays, rays->nrays, spread.max_samples, volume);
}

}  // namespace
}  // namespace zox::ZOX_SET
