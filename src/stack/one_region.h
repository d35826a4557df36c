// Slice stacks, parallel nearest: the choice between one region and many, and the one-region
// path, which needs no lists: starts lie close together in z, so the batch moves through the
// slices as one.
#pragma once

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

// What the rays that have samples left add to the position and number of ray 0, in fixed point, with the
// half that makes indices round. A position is one in slices.
struct RayOffsets {
  int n = 0;
  SampleLanes at;
  Lanes<int> samples;

  RayOffsets(const zox_Rays& batch, int nrays, double slices_per_z) {
    Axes<double> apart;
    const double* start = batch.starts[0];
    for (int r = 0; r < nrays; ++r) {
      if (batch.nsamples[r] < 1) continue;
      if (n == padded(n)) clear_lanes(apart, n);
      const double* s = batch.starts[r];
      apart[0][n] = (s[0] - start[0]) * kScale;
      apart[1][n] = (s[1] - start[1]) * kScale;
      apart[2][n] = ((s[2] - start[2]) * slices_per_z) * kScale;
      at.number[n] = sample_number(r, 0);
      samples[n++] = batch.nsamples[r];
    }
    for (int axis = 0; axis < 3; ++axis) {
      Lanes<int>& offset = at.*kSampleFields[axis];
      truncate_lanes(apart[axis].at, offset.at, n);
      for (int i = 0; i < padded(n); ++i) offset[i] = wrap_add(offset[i], kHalf);
    }
  }

  int first_end() const { return range_of(samples.at, n).low; }

  void drop_ended(int k) {
    int kept = 0;
    for (int i = 0; i < n; ++i) {
      if (samples[i] <= k) continue;
      at.copy(i, kept);
      samples[kept++] = samples[i];
    }
    n = kept;
  }

  static constexpr double kScale = 0x1p21;
  static constexpr int kHalf = 1 << 20;
};

// The position of ray 0, in doubles that accumulate the step; converted for all rays at once.
struct SharedPosition {
  double base[3];
  double step[3];

  // Of the next n samples, in fixed point. The three sums run side by side: each waits for
  // itself alone.
  void run(int n, SampleLanes& at) {
    Axes<double> scaled;
    clear_lanes(scaled, (n - 1) & -16);
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
    for (int axis = 0; axis < 3; ++axis) truncate_lanes(scaled[axis].at, (at.*kSampleFields[axis]).at, n);
  }
};

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
        view.stage<even, false>(*stage, stage->n + i * n + lane, at, shift_right<21>(at.position),
                                store_anywhere);
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

// Whether offsets reach the voxels of the next n samples.
inline bool even_for(StackView& view, const RayOffsets& rays, const SampleLanes& at, int n) {
  Range x, y, z;
  return reach(rays.at.x, rays.n, at.x, n, x) && reach(rays.at.y, rays.n, at.y, n, y) &&
         reach(rays.at.position, rays.n, at.position, n, z) &&
         view.even_for(x, y, {z.low >> 21, z.high >> 21});
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
  RayOffsets rays(batch, nrays, slices_per_z);
  StackSampler<rules> sampler(volume, batch.planes);
  const StageSink sink = sampler.sink();
  StagedSamples* stage = sink.take(false);
  int first_plane = 0;
  for (int k = 0; k < max_samples;) {
    if (k > 0) rays.drop_ended(k);
    for (int end = rays.first_end(), n; k < end; k += n) {
      if (k - first_plane >= kNumberedPlanes) {
        sampler.finish();
        first_plane = k;
        sampler.planes = batch.planes + k;
      }
      n = end - k < kLanes ? end - k : kLanes;
      SampleLanes run;
      position.run(n, run);
      for (int i = 0; i < padded(n); ++i) run.number[i] = sample_number(0, k - first_plane + i);
      const bool even = even_for(sampler.view, rays, run, n);
      if (stage->n > 0 && (stage->even != even || StagedSamples::full(stage->n))) stage = sink.take(even);
      stage->even = even;
      // Few rays go one after the other: a vector then holds samples of one ray.
      const bool few = rays.n < kVector && rays.n < n;
      const SampleLanes &inner = few ? run : rays.at, &outer = few ? rays.at : run;
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
