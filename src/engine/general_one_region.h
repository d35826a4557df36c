// Slice stacks, parallel nearest: the choice between one region and many, and the one-region
// path, which needs no lists: starts lie close together in z, so the batch moves through the
// slices as one.
#pragma once

#include "engine/general_buckets.h"

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

template <Voxel voxel>
ElementOf<voxel> voxel_at(const zox_Volume& volume, int x, int y, int s) {
  using Element = ElementOf<voxel>;
  const char* row = static_cast<const char*>(volume.slices[s]) + volume.rowoffs[y];
  if constexpr (voxel == Voxel::kBit) return bit_of(load<uint8_t>(row + (x >> 3)), bit_shift(x));
  return load<Element>(row + int64_t{x} * int64_t{sizeof(Element)});
}

// The position of ray 0 runs in doubles and is converted once a sample; the other rays add
// their offsets, which hold the half that makes indices round.
template <Voxel voxel>
int cast_one_region(const zox_Rays& batch, int nrays, int, int max_samples, const zox_Volume& volume) {
  constexpr double scale = 0x1p21;
  constexpr int half = 1 << 20;
  const double* start = batch.starts[0];
  double slices_per_z = volume.regscale[0];
  double step[3] = {batch.steps[0][0], batch.steps[0][1], batch.steps[0][2] * slices_per_z};
  double base[3] = {start[0], start[1], slices_per_z * (start[2] - volume.regbounds[0])};
  Axes<int> offset;
  for (int r = 0; r < nrays; ++r) {
    const double* s = batch.starts[r];
    offset[0][r] = wrap_add(truncate((s[0] - start[0]) * scale), half);
    offset[1][r] = wrap_add(truncate((s[1] - start[1]) * scale), half);
    offset[2][r] = wrap_add(truncate(((s[2] - start[2]) * slices_per_z) * scale), half);
  }
  for (int k = 0; k < max_samples; ++k) {
    int at[3];
    for (int axis = 0; axis < 3; ++axis) at[axis] = truncate(base[axis] * scale);
    auto* plane = static_cast<ElementOf<voxel>*>(batch.planes[k]);
    for (int r = 0; r < nrays; ++r) {
      if (k >= batch.nsamples[r]) continue;
      int x = wrap_add(offset[0][r], at[0]) >> 21, y = wrap_add(offset[1][r], at[1]) >> 21;
      plane[r] = voxel_at<voxel>(volume, x, y, wrap_add(offset[2][r], at[2]) >> 21);
    }
    for (int axis = 0; axis < 3; ++axis) base[axis] += step[axis];
  }
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
