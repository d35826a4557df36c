#include "clip.h"

#include <algorithm>
#include <cmath>

namespace zox_mip {
namespace {

// Fixed-point positions have 20 fraction bits or more. A start is wrong by at most two units of 2^-20
// and every step adds less than a unit and a half (rounded negative steps are the worst), so that two
// units per sample and a few more keep the last sample inside. Doubles err far less.
constexpr double kDriftPerSample = 2.0 / (1 << 20);
constexpr int kSpareSamples = 4;

// Sample numbers beyond this (a ray almost parallel to a face, far off) are outside of any volume.
constexpr double kFarSample = 1 << 29;

}  // namespace

SampleBox sample_box(const std::array<int, 3>& size, Interpolation interpolation, Layout layout,
                     int max_samples) {
  const double margin = (max_samples + kSpareSamples) * kDriftPerSample;
  SampleBox box{};
  for (int axis = 0; axis < 3; ++axis) {
    // Trilinear samples also read the next voxel. A stack's region begins at its first slice's centre,
    // and a ray's z must not leave it.
    const bool between_centres =
        interpolation == Interpolation::kTrilinear || (layout == Layout::kStack && axis == 2);
    const double beyond = between_centres ? 0 : 0.5;
    box.low[axis] = -beyond + margin;
    box.high[axis] = size[static_cast<size_t>(axis)] - 1 + beyond - margin;
  }
  return box;
}

Stretch clip(const SampleBox& box, const Vec3& middle, const Vec3& step) {
  double first = -kFarSample;
  double last = kFarSample;
  for (int axis = 0; axis < 3; ++axis) {
    if (step[axis] == 0) {
      if (middle[axis] < box.low[axis] || middle[axis] > box.high[axis]) return {};
      continue;
    }
    const double at_low = (box.low[axis] - middle[axis]) / step[axis];
    const double at_high = (box.high[axis] - middle[axis]) / step[axis];
    first = std::max(first, std::ceil(std::min(at_low, at_high)));
    last = std::min(last, std::floor(std::max(at_low, at_high)));
  }
  if (first > last) return {};
  return {static_cast<int>(first), static_cast<int>(last - first) + 1};
}

}  // namespace zox_mip
