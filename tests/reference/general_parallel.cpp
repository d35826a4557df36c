// Slice stacks, all rays with the step of ray 0.
#include <cmath>

#include "general_stack.h"
#include "reference.h"

namespace reference {

// Do all rays start within a fifth of the one region's depth from ray 0? Rays without samples
// count too. A comparison with NaN says no.
bool takes_one_region_path(const zox_Volume& volume, const zox_Rays& rays) {
  if (volume.nregions != 1) return false;
  double spread = 0.0;
  for (int32_t r = 0; r < rays.nrays; ++r) {
    const double distance = std::fabs(rays.starts[r][2] - rays.starts[0][2]);
    if (distance > spread) spread = distance;
  }
  return (volume.regbounds[1] - volume.regbounds[0]) * 0.2 > spread;
}

namespace {

constexpr int32_t kMaxRays = 64;

// The one-region path reads its voxels by signed column and row.
struct ByteAt {
  using Element = uint8_t;
  static Element read(const zox_Volume& volume, int32_t slice, int32_t y, int32_t x) {
    return load<Element>(volume.slices[slice], int64_t{volume.rowoffs[y]} + x);
  }
};
struct ShortAt {
  using Element = int16_t;
  static Element read(const zox_Volume& volume, int32_t slice, int32_t y, int32_t x) {
    return load<Element>(volume.slices[slice], int64_t{volume.rowoffs[y]} + 2 * int64_t{x});
  }
};
struct BitAt {
  using Element = uint8_t;
  static Element read(const zox_Volume& volume, int32_t slice, int32_t y, int32_t x) {
    return load_bit(volume.slices[slice], int64_t{volume.rowoffs[y]} + (x >> 3), x);
  }
};

// The position of ray 0 runs in doubles and becomes fixed point anew at every sample; the other
// rays stand at fixed offsets from it. Half a voxel enters with the offsets. Slices count from 0.
template <typename Voxel>
void cast_one_region(const zox_Volume& volume, const zox_Rays& rays) {
  const double scale = volume.regscale[0];
  const double* first = rays.starts[0];
  const double* step = rays.steps[0];
  int32_t offset_x[kMaxRays], offset_y[kMaxRays], offset_z[kMaxRays];
  int32_t planes = 0;
  for (int32_t r = 0; r < rays.nrays; ++r) {
    const double* start = rays.starts[r];
    offset_x[r] = wrap_add(truncate((start[0] - first[0]) * kNearestScale), 1 << 20);
    offset_y[r] = wrap_add(truncate((start[1] - first[1]) * kNearestScale), 1 << 20);
    offset_z[r] = wrap_add(truncate(((start[2] - first[2]) * scale) * kNearestScale), 1 << 20);
    if (rays.nsamples[r] > planes) planes = rays.nsamples[r];
  }
  const double step_z = step[2] * scale;
  double x = first[0];
  double y = first[1];
  double z = scale * (first[2] - volume.regbounds[0]);
  for (int32_t k = 0; k < planes; ++k) {
    const int32_t fixed_x = truncate(x * kNearestScale);
    const int32_t fixed_y = truncate(y * kNearestScale);
    const int32_t fixed_z = truncate(z * kNearestScale);
    for (int32_t r = 0; r < rays.nrays; ++r) {
      if (k >= rays.nsamples[r]) continue;
      const int32_t slice = wrap_add(offset_z[r], fixed_z) >> 21;
      const int32_t row = wrap_add(offset_y[r], fixed_y) >> 21;
      const int32_t column = wrap_add(offset_x[r], fixed_x) >> 21;
      if (!note({r, column, row, slice})) write_sample(rays, k, r, Voxel::read(volume, slice, row, column));
    }
    x += step[0];
    y += step[1];
    z += step_z;
  }
}

template <typename OneRegionVoxel, typename ListVoxel>
int cast_nearest(const zox_Volume& volume, const zox_Rays& rays) {
  if (rays.nrays < 1) return ZOX_STS_NO_ERROR;
  if (takes_one_region_path(volume, rays)) {
    cast_one_region<OneRegionVoxel>(volume, rays);
    return ZOX_STS_NO_ERROR;
  }
  // Nothing is rounded here: half a voxel is added to the starts in x and y, the rest is truncated.
  const double* step = rays.steps[0];
  const int32_t dx = truncate(step[0] * kNearestScale);
  const int32_t dy = truncate(step[1] * kNearestScale);
  const int32_t dz = truncate(step[2] * kNearestScale);
  return cast_stack_nearest<ListVoxel>(volume, rays, [&](int32_t r) {
    const double* start = rays.starts[r];
    return FixedRay{truncate((start[0] + 0.5) * kNearestScale),
                    truncate((start[1] + 0.5) * kNearestScale),
                    truncate(start[2] * kNearestScale),
                    dx,
                    dy,
                    dz};
  });
}

// Both members round everything, the boundaries too.
template <typename Voxel>
int cast_trilinear(const zox_Volume& volume, const zox_Rays& rays) {
  return cast_stack_trilinear<Voxel, plain_offset<Voxel>>(volume, rays, add_half_and_truncate,
                                                          [&rays](int32_t) { return rays.steps[0]; });
}

}  // namespace

int general_parallel_nearest_8u(const zox_Volume* volume, const zox_Rays* rays) {
  return cast_nearest<ByteAt, ByteVoxel>(*volume, *rays);
}
int general_parallel_nearest_16s(const zox_Volume* volume, const zox_Rays* rays) {
  return cast_nearest<ShortAt, ShortVoxel>(*volume, *rays);
}
int general_parallel_nearest_bit_8u(const zox_Volume* volume, const zox_Rays* rays) {
  return cast_nearest<BitAt, BitVoxel>(*volume, *rays);
}
int general_parallel_trilinear_8u(const zox_Volume* volume, const zox_Rays* rays) {
  return cast_trilinear<uint8_t>(*volume, *rays);
}
int general_parallel_trilinear_16s(const zox_Volume* volume, const zox_Rays* rays) {
  return cast_trilinear<int16_t>(*volume, *rays);
}

}  // namespace reference
