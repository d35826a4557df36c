// Slice stacks, parallel nearest: the choice between one region and many, and the one-region
// path, which needs no lists: starts lie close together in z, so the batch moves through the
// slices as one.
#pragma once

#include "numbers/march.h"
#include "stack/stack_sampling.h"

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

// The position of ray 0, in doubles that accumulate the step; converted for all rays at once.
struct SharedPosition {
  double base[3];
  double step[3];

  // Of the next n samples, in fixed point. The three sums run side by side: each waits for
  // itself alone.
  void run(int n, Axes<int>& at) {
    Axes<double> scaled;
    double x = base[0], y = base[1], z = base[2];
    for (int i = 0; i < n; ++i) {
      scaled[0][i] = x * 0x1p21;
      scaled[1][i] = y * 0x1p21;
      scaled[2][i] = z * 0x1p21;
      x += step[0];
      y += step[1];
      z += step[2];
    }
    base[0] = x;
    base[1] = y;
    base[2] = z;
    pad_lanes(scaled, n);
    for (int axis = 0; axis < 3; ++axis) truncate_lanes(scaled[axis].at, at[axis].at, n);
  }
};

// Appends sample k of n rays, for which ray 0 is at position number i of `at`.
// Lanes beyond n hold anything: every sum wraps.
inline void append_rays(const RayOffsets& offsets, const Axes<int>& at, int i, int k, int n,
                        const StackView& view, StagedSamples& stage) {
  const Vector x_at = broadcast(at[0][i]), y_at = broadcast(at[1][i]), z_at = broadcast(at[2][i]);
  const Vector first_number = broadcast(sample_number(0, k));
  for (int lane = 0; lane < n; lane += kVector) {
    const int to = stage.n + lane;
    Vector x = sum(load_vector(&offsets.x[lane]), x_at), y = sum(load_vector(&offsets.y[lane]), y_at);
    Vector slice = shift_right<21>(sum(load_vector(&offsets.slice[lane]), z_at));
    store_anywhere(stage.number + to, sum(load_vector(&offsets.ray[lane]), first_number));
    store_anywhere(stage.place + to, stage.even ? view.offset(x, y, view.slice_start(slice)) : slice);
    if (!stage.even || view.bits_are_read) store_anywhere(stage.x + to, x);
    if (!stage.even) store_anywhere(stage.y + to, y);
  }
  stage.n += n;
}

// Appends samples k .. k + n - 1 of the one ray that is left.
inline void append_run(const RayOffsets& offsets, const Axes<int>& at, int k, int n, const StackView& view,
                       StagedSamples& stage) {
  const int x = offsets.x[0], y = offsets.y[0], slice = offsets.slice[0];
  const int end = stage.n;
  for (int i = 0; i < padded(n); ++i) {
    stage.x[end + i] = wrap_add(x, at[0][i]);
    stage.y[end + i] = wrap_add(y, at[1][i]);
    stage.place[end + i] = wrap_add(slice, at[2][i]) >> 21;
    stage.number[end + i] = sample_number(offsets.ray[0], k + i);
  }
  if (stage.even) view.place_evenly(stage, end, n);
  stage.n += n;
}

// What the rays reach on one axis while ray 0 moves through these positions. False if a sum wraps.
inline bool reach(const Lanes<int>& offsets, int rays, const Lanes<int>& at, int n, Range& reached) {
  const Range offset = range_of(offsets.at, rays), position = range_of(at.at, n);
  reached = {wrap_add(offset.low, position.low), wrap_add(offset.high, position.high)};
  return int64_t{offset.low} + position.low == reached.low &&
         int64_t{offset.high} + position.high == reached.high;
}

// Whether offsets reach the voxels of the next n samples.
inline bool even_for(StackView& view, const RayOffsets& offsets, int rays, const Axes<int>& at, int n) {
  Range x, y, z;
  return reach(offsets.x, rays, at[0], n, x) && reach(offsets.y, rays, at[1], n, y) &&
         reach(offsets.slice, rays, at[2], n, z) && view.even_for(x, y, {z.low >> 21, z.high >> 21});
}

// Fills offsets and lanes; rays without samples get none.
inline void place_rays(const zox_Rays& batch, int nrays, double slices_per_z, RayOffsets& offsets,
                       Marchers& rays) {
  constexpr double scale = 0x1p21;
  constexpr int half = 1 << 20;
  const double* start = batch.starts[0];
  for (int r = 0; r < nrays; ++r) {
    if (batch.nsamples[r] < 1) continue;
    const double* s = batch.starts[r];
    offsets.x[rays.n] = wrap_add(truncate((s[0] - start[0]) * scale), half);
    offsets.y[rays.n] = wrap_add(truncate((s[1] - start[1]) * scale), half);
    offsets.slice[rays.n] = wrap_add(truncate(((s[2] - start[2]) * slices_per_z) * scale), half);
    offsets.ray[rays.n] = r;
    rays.add(r, batch.nsamples[r]);
  }
}

// Ray and plane together make a 32-bit number, so planes are counted anew after so many: a ray may
// have any number of samples.
constexpr int kNumberedPlanes = 1 << 24;

template <FetchRules rules>
int cast_one_region(const zox_Rays& batch, int nrays, int max_samples, const zox_Volume& volume) {
  const double *start = batch.starts[0], *step = batch.steps[0];
  const double slices_per_z = volume.regscale[0];
  SharedPosition position = {{start[0], start[1], slices_per_z * (start[2] - volume.regbounds[0])},
                             {step[0], step[1], step[2] * slices_per_z}};
  Marchers rays;
  RayOffsets offsets;
  place_rays(batch, nrays, slices_per_z, offsets, rays);
  StackSampler<rules> sampler(volume, batch.planes);
  StageSink sink = sampler.sink();
  StagedSamples* stage = sink.take();
  int first_plane = 0;
  for (int k = 0; k < max_samples; rays.drop_ended(k, offsets)) {
    for (int end = rays.first_end(); k < end;) {
      if (k - first_plane >= kNumberedPlanes) {
        sampler.finish();
        first_plane = k;
        sampler.planes = batch.planes + k;
      }
      Axes<int> at;
      int n = end - k < kLanes ? end - k : kLanes;
      position.run(n, at);
      bool even = even_for(sampler.view, offsets, rays.n, at, n);
      if (stage->even != even && stage->n > 0) stage = sink.take();
      stage->even = even;
      if (rays.n == 1) append_run(offsets, at, k - first_plane, n, sampler.view, *stage);
      for (int i = 0; i < n; ++i) {
        if (rays.n > 1) append_rays(offsets, at, i, k - first_plane + i, rays.n, sampler.view, *stage);
        if (stage->n <= kStage - kLanes) continue;
        stage = sink.take();
        stage->even = even;
      }
      k += n;
    }
  }
  sampler.finish();
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
