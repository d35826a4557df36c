// Blocked volumes, every ray with its own step.
#include "bricks.h"
#include "reference.h"

namespace reference {
namespace {

// Positions in fixed point with 20 fraction bits. Half a voxel is added to the start alone; what
// the step has beyond 2^-20 is lost once, and the loss grows with every sample.
template <typename Voxel>
int cast_nearest(const zox_Volume& volume, const zox_Rays& rays) {
  constexpr double kScale = 1048576.0;
  const BlockedVolume<Voxel> blocked(volume);
  for (int32_t r = 0; r < rays.nrays; ++r) {
    int32_t position[3];
    int32_t step[3];
    for (int axis = 0; axis < 3; ++axis) {
      position[axis] = truncate((rays.starts[r][axis] + 0.5) * kScale);
      step[axis] = truncate(rays.steps[r][axis] * kScale);
    }
    for (int32_t k = 0; k < rays.nsamples[r]; ++k) {
      const int32_t x = position[0] >> 20, y = position[1] >> 20, z = position[2] >> 20;
      if (!note({r, x, y, z})) write_sample(rays, k, r, blocked.voxel(x, y, z));
      for (int axis = 0; axis < 3; ++axis) position[axis] = wrap_add(position[axis], step[axis]);
    }
  }
  return ZOX_STS_NO_ERROR;
}

// Positions in doubles, accumulated: start + step + step and never start + k * step.
template <typename Voxel>
int cast_trilinear(const zox_Volume& volume, const zox_Rays& rays) {
  const BlockedVolume<Voxel> blocked(volume);
  for (int32_t r = 0; r < rays.nrays; ++r) {
    const double* start = rays.starts[r];
    const double* step = rays.steps[r];
    double position[3] = {start[0], start[1], start[2]};
    for (int32_t k = 0; k < rays.nsamples[r]; ++k) {
      if (!note(r, position)) write_sample(rays, k, r, blocked.trilinear(position));
      for (int axis = 0; axis < 3; ++axis) position[axis] += step[axis];
    }
  }
  return ZOX_STS_NO_ERROR;
}

}  // namespace

int blocked_divergent_nearest_8u(const zox_Volume* volume, const zox_Rays* rays) {
  return cast_nearest<uint8_t>(*volume, *rays);
}
int blocked_divergent_nearest_16s(const zox_Volume* volume, const zox_Rays* rays) {
  return cast_nearest<int16_t>(*volume, *rays);
}
int blocked_divergent_trilinear_8u(const zox_Volume* volume, const zox_Rays* rays) {
  return cast_trilinear<uint8_t>(*volume, *rays);
}
int blocked_divergent_trilinear_16s(const zox_Volume* volume, const zox_Rays* rays) {
  return cast_trilinear<int16_t>(*volume, *rays);
}

}  // namespace reference
