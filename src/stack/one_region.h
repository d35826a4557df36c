// Slice stacks, parallel nearest: the choice between one region and many, and the one-region
// path, which needs no lists: starts lie close together in z, so the batch moves through the
// slices as one.
#pragma once

#include "numbers/march.h"
#include "stack/cursor_lanes.h"
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

// Slices and voxels in fixed point.
inline void to_samples(const Axes<double>& from, int n, SampleLanes& to) {
  for (int axis = 0; axis < 3; ++axis) {
    to_fixed_lanes<kTrunc>(from[axis], 0.0, 0x1p21, to.*kSampleFields[axis], n);
  }
}

// The rays that have samples, and what each adds to the position and number of ray 0, with the half that
// makes indices round.
inline void set_apart(const zox_Rays& batch, int nrays, double slices_per_z, Marchers& rays,
                      SampleLanes& to) {
  constexpr int kHalf = 1 << 20;
  Axes<double> apart;
  const double* start = batch.starts[0];
  for (int r = 0; r < nrays; ++r) {
    if (batch.nsamples[r] < 1) continue;
    const double* s = batch.starts[r];
    apart[0][rays.n] = s[0] - start[0];
    apart[1][rays.n] = s[1] - start[1];
    apart[2][rays.n] = (s[2] - start[2]) * slices_per_z;
    to.number[rays.n] = sample_number(r, 0);
    rays.add(r, batch.nsamples[r]);
  }
  pad_lanes(apart, rays.n);
  to_samples(apart, rays.n, to);
  for (int axis = 0; axis < 3; ++axis) {
    Lanes<int>& offset = to.*kSampleFields[axis];
    for (int i = 0; i < padded(rays.n); ++i) offset[i] = wrap_add(offset[i], kHalf);
  }
}

// Every sum of an inner and an outer sample, all inner ones of an outer one side by side, as many of these
// at once as there is room for. The last vector goes first: what it writes beyond its lanes others overwrite.
template <bool even>
StagedSamples* stage_sums(const SampleLanes& inner, int n, const SampleLanes& outer, int count,
                          const StackView& view, const StageSink& sink, StagedSamples* stage) {
  for (int done = 0; done < count;) {
    const int room = (kStage - stage->n) / n, steps = count - done < room ? count - done : room;
    for (int lane = (n - 1) & -kVector; lane >= 0; lane -= kVector) {
      const SampleVectors first = SampleVectors::of(inner, lane);
      for (int i = 0; i < steps; ++i) {
        SampleVectors at = first;
        at.move(SampleVectors::all(outer, done + i));
        view.stage<even, false>(*stage, stage->n + i * n + lane, at, shift_right(at.position, 21),
                                store<Vector>);
      }
    }
    stage->n += steps * n;
    done += steps;
    if (done == count) break;
    stage = sink.take(even);
  }
  return stage;
}

// What the sums on one axis reach. False if one wraps.
inline bool reach(const Lanes<int>& a, int na, const Lanes<int>& b, int nb, Range& reached) {
  const Range in_a = range_of(a.at, na), in_b = range_of(b.at, nb);
  reached = {wrap_add(in_a.low, in_b.low), wrap_add(in_a.high, in_b.high)};
  return int64_t{in_a.low} + in_b.low == reached.low && int64_t{in_a.high} + in_b.high == reached.high;
}

// Whether offsets reach the voxels of n samples of each ray.
inline bool even_for(StackView& view, const SampleLanes& rays, int nrays, const SampleLanes& at, int n) {
  Range x, y, z;
  return reach(rays.x, nrays, at.x, n, x) && reach(rays.y, nrays, at.y, n, y) &&
         reach(rays.position, nrays, at.position, n, z) && view.even_for(x, y, {z.low >> 21, z.high >> 21});
}

// Ray and plane together make a 32-bit number, so planes are counted anew after so many: a ray may
// have any number of samples.
constexpr int kNumberedPlanes = 1 << 24;

template <FetchRules rules>
int cast_one_region(const zox_Rays& batch, int nrays, int max_samples, const zox_Volume& volume) {
  const double *start = batch.starts[0], *step = batch.steps[0];
  const double slices_per_z = volume.regscale[0];
  RayWalk<double> ray_0 = {{},
                           {start[0], start[1], slices_per_z * (start[2] - volume.regbounds[0])},
                           {step[0], step[1], step[2] * slices_per_z}};
  Marchers rays;
  SampleLanes apart, run;
  set_apart(batch, nrays, slices_per_z, rays, apart);
  StackSampler<rules> sampler(volume, batch.planes);
  const StageSink sink = sampler.sink();
  StagedSamples* stage = sink.take(false);
  int first_plane = 0;
  for (int k = 0; k < max_samples;) {
    if (k > 0) rays.drop_ended(k, apart);
    for (int end = rays.first_end(), n; k < end; k += n) {
      if (k - first_plane >= kNumberedPlanes) {
        sampler.finish();
        first_plane = k;
        sampler.planes = batch.planes + k;
      }
      n = end - k < kLanes ? end - k : kLanes;
      Axes<double> positions;
      ray_0.sums(n, positions);
      to_samples(positions, n, run);
      for (int i = 0; i < padded(n); ++i) run.number[i] = sample_number(0, k - first_plane + i);
      const bool even = even_for(sampler.view, apart, rays.n, run, n);
      if (stage->n > 0 && (stage->even != even || StagedSamples::full(stage->n))) stage = sink.take(even);
      stage->even = even;
      // Few rays go one after the other: a vector then holds samples of one ray.
      const bool few = rays.n < kVector && rays.n < n;
      const SampleLanes &inner = few ? run : apart, &outer = few ? apart : run;
      auto stage_all = even ? stage_sums<true> : stage_sums<false>;
      stage = stage_all(inner, few ? n : rays.n, outer, few ? rays.n : n, sampler.view, sink, stage);
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
