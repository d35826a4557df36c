// Which samples of a ray may be taken: those whose voxel and neighbours lie inside the volume.
#pragma once

#include <array>

#include "options.h"
#include "vec3.h"

namespace zox_mip {

// More samples on one ray than this would let rounding drift too far (and need too much memory).
inline constexpr int kMaxSamples = 65536;

struct SampleBox {
  Vec3 low;
  Vec3 high;
};

// The positions that may be sampled, in voxels, when no ray has more than max_samples of them.
SampleBox sample_box(const std::array<int, 3>& size, Interpolation interpolation, Layout layout,
                     int max_samples);

// Samples number first .. first + count - 1 of a ray lie in the box; sample number n lies at
// middle + n * step, and the step is not zero.
struct Stretch {
  int first = 0;
  int count = 0;
};

Stretch clip(const SampleBox& box, const Vec3& middle, const Vec3& step);

}  // namespace zox_mip
