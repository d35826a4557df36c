// Blocked volumes, all rays with the step of ray 0.
//
// Two traversals exist, and they compute the positions of all rays but ray 0 differently: ray by
// ray from the ray's own start, sample by sample from its offset to a base that runs from the
// start of ray 0. Which one is taken is therefore part of the result.
#include <cmath>

#include "bricks.h"
#include "reference.h"

namespace reference {
namespace {

constexpr int32_t kMaxSharedRays = 64;  // larger batches always go ray by ray

// What is not a number takes the place of nothing.
double larger(double largest, double next) { return next > largest ? next : largest; }

// The largest component, where a move of x_weight voxels in x or of 6 in y counts as one in z.
double measure(double x, double y, double z, double x_weight) {
  return larger(larger(larger(0.0, x / x_weight), y / 6.0), z);
}

// Is the step longer than the rays lie apart? The sums are those of the distances between
// neighbouring rays; a single ray has no distance.
bool goes_sample_by_sample(const zox_Rays& rays, const double distance_sums[3], double x_weight) {
  const double* step = rays.steps[0];
  const double along = measure(std::fabs(step[0]), std::fabs(step[1]), std::fabs(step[2]), x_weight);
  if (rays.nrays == 1) return along > 0.0;
  const double gaps = rays.nrays - 1;
  const double across =
      measure(distance_sums[0] / gaps, distance_sums[1] / gaps, distance_sums[2] / gaps, x_weight);
  return along > across;
}

int32_t largest_count(const zox_Rays& rays) {
  int32_t largest = -1;
  for (int32_t r = 0; r < rays.nrays; ++r) {
    if (rays.nsamples[r] > largest) largest = rays.nsamples[r];
  }
  return largest;
}

template <typename Voxel>
struct NearestSampler {
  static constexpr double kStartBias = 0.5;  // makes the truncation below find the nearest voxel
  explicit NearestSampler(const zox_Volume& volume) : blocked(volume) {}
  Voxel operator()(const double position[3]) const {
    return blocked.voxel(truncate(position[0]), truncate(position[1]), truncate(position[2]));
  }
  BlockedVolume<Voxel> blocked;
};

template <typename Voxel>
struct TrilinearSampler {
  static constexpr double kStartBias = 0.0;
  explicit TrilinearSampler(const zox_Volume& volume) : blocked(volume) {}
  Voxel operator()(const double position[3]) const { return blocked.trilinear(position); }
  BlockedVolume<Voxel> blocked;
};

template <typename Sampler>
void cast_ray_by_ray(const Sampler& sample, const zox_Rays& rays) {
  const double* step = rays.steps[0];
  for (int32_t r = 0; r < rays.nrays; ++r) {
    double position[3];
    for (int axis = 0; axis < 3; ++axis) position[axis] = rays.starts[r][axis] + Sampler::kStartBias;
    for (int32_t k = 0; k < rays.nsamples[r]; ++k) {
      if (!note(r, position)) write_sample(rays, k, r, sample(position));
      for (int axis = 0; axis < 3; ++axis) position[axis] += step[axis];
    }
  }
}

template <typename Sampler>
void cast_sample_by_sample(const Sampler& sample, const zox_Rays& rays,
                           const double offsets[kMaxSharedRays][3]) {
  const double* step = rays.steps[0];
  double base[3];
  for (int axis = 0; axis < 3; ++axis) base[axis] = rays.starts[0][axis] + Sampler::kStartBias;
  const int32_t planes = largest_count(rays);
  for (int32_t k = 0; k < planes; ++k) {
    for (int32_t r = 0; r < rays.nrays; ++r) {
      if (k >= rays.nsamples[r]) continue;
      const double position[3] = {offsets[r][0] + base[0], offsets[r][1] + base[1], offsets[r][2] + base[2]};
      if (!note(r, position)) write_sample(rays, k, r, sample(position));
    }
    for (int axis = 0; axis < 3; ++axis) base[axis] += step[axis];
  }
}

template <typename Sampler>
int cast_in_doubles(const zox_Volume& volume, const zox_Rays& rays, double x_weight) {
  if (rays.nrays < 1) return ZOX_STS_NO_ERROR;
  const Sampler sample(volume);
  if (rays.nrays > kMaxSharedRays) {
    cast_ray_by_ray(sample, rays);
    return ZOX_STS_NO_ERROR;
  }
  double offsets[kMaxSharedRays][3];
  double distance_sums[3] = {0.0, 0.0, 0.0};
  for (int32_t r = 0; r < rays.nrays; ++r) {
    for (int axis = 0; axis < 3; ++axis) {
      offsets[r][axis] = rays.starts[r][axis] - rays.starts[0][axis];
      if (r > 0) distance_sums[axis] += std::fabs(offsets[r][axis] - offsets[r - 1][axis]);
    }
  }
  if (goes_sample_by_sample(rays, distance_sums, x_weight)) {
    cast_sample_by_sample(sample, rays, offsets);
  } else {
    cast_ray_by_ray(sample, rays);
  }
  return ZOX_STS_NO_ERROR;
}

// The 8-bit trilinear member: fixed point with 20 fraction bits, integers throughout.
constexpr double kScale = 1048576.0;

struct FixedStep {
  explicit FixedStep(const double* step)
      : axis{truncate(step[0] * kScale), truncate(step[1] * kScale), truncate(step[2] * kScale)} {}
  void advance(int32_t position[3]) const {
    for (int a = 0; a < 3; ++a) position[a] = wrap_add(position[a], axis[a]);
  }
  int32_t axis[3];
};

void sample_fixed(const BlockedVolume<uint8_t>& blocked, const zox_Rays& rays, int32_t k, int32_t r,
                  int32_t x, int32_t y, int32_t z) {
  if (note({r, x >> 20, y >> 20, z >> 20})) return;
  write_sample(rays, k, r, interpolate_fixed(blocked.corners(x >> 20, y >> 20, z >> 20), x, y, z));
}

void cast_fixed_ray_by_ray(const BlockedVolume<uint8_t>& blocked, const zox_Rays& rays) {
  const FixedStep step(rays.steps[0]);
  for (int32_t r = 0; r < rays.nrays; ++r) {
    int32_t position[3];
    for (int axis = 0; axis < 3; ++axis) position[axis] = truncate(rays.starts[r][axis] * kScale);
    for (int32_t k = 0; k < rays.nsamples[r]; ++k) {
      sample_fixed(blocked, rays, k, r, position[0], position[1], position[2]);
      step.advance(position);
    }
  }
}

void cast_fixed_sample_by_sample(const BlockedVolume<uint8_t>& blocked, const zox_Rays& rays, int32_t base[3],
                                 const int32_t offsets[kMaxSharedRays][3]) {
  const FixedStep step(rays.steps[0]);
  const int32_t planes = largest_count(rays);
  for (int32_t k = 0; k < planes; ++k) {
    for (int32_t r = 0; r < rays.nrays; ++r) {
      if (k >= rays.nsamples[r]) continue;
      sample_fixed(blocked, rays, k, r, wrap_add(base[0], offsets[r][0]), wrap_add(base[1], offsets[r][1]),
                   wrap_add(base[2], offsets[r][2]));
    }
    step.advance(base);
  }
}

int cast_in_fixed_point(const zox_Volume& volume, const zox_Rays& rays, double x_weight) {
  if (rays.nrays < 1) return ZOX_STS_NO_ERROR;
  const BlockedVolume<uint8_t> blocked(volume);
  if (rays.nrays > kMaxSharedRays) {
    cast_fixed_ray_by_ray(blocked, rays);
    return ZOX_STS_NO_ERROR;
  }
  // An offset is cut off as a whole: the start of ray r keeps its fraction of a unit until the
  // base has been taken from it.
  int32_t base[3];
  int32_t offsets[kMaxSharedRays][3];
  double distance_sums[3] = {0.0, 0.0, 0.0};
  for (int axis = 0; axis < 3; ++axis) base[axis] = truncate(rays.starts[0][axis] * kScale);
  for (int32_t r = 0; r < rays.nrays; ++r) {
    for (int axis = 0; axis < 3; ++axis) {
      offsets[r][axis] = truncate(rays.starts[r][axis] * kScale - base[axis]);
      if (r == 0) continue;
      const int32_t distance = absolute(wrap_subtract(offsets[r][axis], offsets[r - 1][axis]));
      distance_sums[axis] += static_cast<double>(distance) * (1.0 / kScale);
    }
  }
  if (goes_sample_by_sample(rays, distance_sums, x_weight)) {
    cast_fixed_sample_by_sample(blocked, rays, base, offsets);
  } else {
    cast_fixed_ray_by_ray(blocked, rays);
  }
  return ZOX_STS_NO_ERROR;
}

// Deliberately unlike: a move in x counts half as much for 8-bit voxels.
constexpr double kXWeight8 = 12.0;
constexpr double kXWeight16 = 6.0;

}  // namespace

int blocked_parallel_nearest_8u(const zox_Volume* volume, const zox_Rays* rays) {
  return cast_in_doubles<NearestSampler<uint8_t>>(*volume, *rays, kXWeight8);
}
int blocked_parallel_nearest_16s(const zox_Volume* volume, const zox_Rays* rays) {
  return cast_in_doubles<NearestSampler<int16_t>>(*volume, *rays, kXWeight16);
}
int blocked_parallel_trilinear_8u(const zox_Volume* volume, const zox_Rays* rays) {
  return cast_in_fixed_point(*volume, *rays, kXWeight8);
}
int blocked_parallel_trilinear_16s(const zox_Volume* volume, const zox_Rays* rays) {
  return cast_in_doubles<TrilinearSampler<int16_t>>(*volume, *rays, kXWeight16);
}

}  // namespace reference
