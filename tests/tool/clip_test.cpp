// Clipped rays, walked in the arithmetic of every operation: no sample may leave the volume, nor may a
// neighbour that it reads.
#include "clip.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

using namespace zox_mip;

namespace {

// Each way of walking that the library documents, for one axis, in voxels. The index is the lower one.
using WalkFunction = int (*)(double start, double step, int samples);

int truncated(double value) { return static_cast<int>(value); }

// The lowest and highest index that the walk of an axis meets are at its ends, as steps do not change.
int fixed_20_truncated(double start, double step, int k) {
  return (truncated((start + 0.5) * 1048576) + k * truncated(step * 1048576)) >> 20;
}
int fixed_20_integer(double start, double step, int k) {
  return (truncated(start * 1048576) + k * truncated(step * 1048576)) >> 20;
}
int fixed_20_rounded(double start, double step, int k) {
  return (truncated(start * 1048576 + 0.5) + k * truncated(step * 1048576 + 0.5)) >> 20;
}
int fixed_21_rounded_step(double start, double step, int k) {
  return (truncated((start + 0.5) * 2097152) + k * truncated(step * 2097152 + 0.5)) >> 21;
}
int fixed_21_truncated_step(double start, double step, int k) {
  return (truncated((start + 0.5) * 2097152) + k * truncated(step * 2097152)) >> 21;
}
int in_doubles(double start, double step, int k) {
  for (int i = 0; i < k; ++i) start += step;
  // Truncation would hide a position just below 0.
  return static_cast<int>(std::floor(start));
}
int in_doubles_with_half(double start, double step, int k) { return in_doubles(start + 0.5, step, k); }

const WalkFunction kNearestWalks[] = {fixed_20_truncated, fixed_21_rounded_step, fixed_21_truncated_step,
                                      in_doubles_with_half};
const WalkFunction kTrilinearWalks[] = {fixed_20_integer, fixed_20_rounded, in_doubles};

// Rays through a volume of random shape, many of them grazing its faces.
struct RandomRay {
  std::array<int, 3> size;
  Vec3 middle, step;
};

RandomRay draw(std::mt19937& random) {
  std::uniform_int_distribution<int> size(2, 900);
  std::uniform_real_distribution<double> unit(-1, 1);
  RandomRay ray{};
  for (int axis = 0; axis < 3; ++axis) {
    ray.size[static_cast<size_t>(axis)] = size(random);
    ray.middle[axis] = (ray.size[static_cast<size_t>(axis)] - 1) * (unit(random) + 1) / 2;
    ray.step[axis] = unit(random);
    if (random() % 4 == 0) ray.step[axis] *= 1e-6;
    if (random() % 8 == 0) ray.step[axis] = 0;
    if (random() % 4 == 0) ray.middle[axis] = random() % 2 ? -0.5 : 0;
    if (random() % 8 == 0) ray.middle[axis] = ray.size[static_cast<size_t>(axis)] - (random() % 2 ? 1 : 0.5);
  }
  if (length(ray.step) == 0) ray.step[0] = 1;
  return ray;
}

constexpr int kMostSamples = 20000;

// Returns the number of samples, so that the test can see that it tests something.
int walk(const RandomRay& ray, Interpolation interpolation, Layout layout) {
  const SampleBox box = sample_box(ray.size, interpolation, layout, kMostSamples);
  const Stretch stretch = clip(box, ray.middle, ray.step);
  if (stretch.count == 0 || stretch.count > kMostSamples) return 0;
  const Vec3 start = ray.middle + ray.step * stretch.first;
  const bool nearest = interpolation == Interpolation::kNearest;
  for (int axis = 0; axis < 3; ++axis) {
    const int last_index = ray.size[static_cast<size_t>(axis)] - (nearest ? 1 : 2);
    const auto check = [&](WalkFunction index) {
      for (const int k : {0, stretch.count - 1}) {
        EXPECT_GE(index(start[axis], ray.step[axis], k), 0) << "axis " << axis << ", sample " << k;
        EXPECT_LE(index(start[axis], ray.step[axis], k), last_index) << "axis " << axis << ", sample " << k;
      }
    };
    if (nearest)
      std::for_each(std::begin(kNearestWalks), std::end(kNearestWalks), check);
    else
      std::for_each(std::begin(kTrilinearWalks), std::end(kTrilinearWalks), check);
    if (layout == Layout::kStack && axis == 2) {
      EXPECT_GE(start[2], 0);
      EXPECT_LE(start[2] + ray.step[2] * (stretch.count - 1), ray.size[2] - 1);
    }
  }
  return stretch.count;
}

TEST(Clip, NoSampleLeavesTheVolume) {
  std::mt19937 random(11);
  int sampled = 0;
  for (int i = 0; i < 3000 && !testing::Test::HasFailure(); ++i) {
    const RandomRay ray = draw(random);
    for (const Interpolation interpolation : {Interpolation::kNearest, Interpolation::kTrilinear})
      for (const Layout layout : {Layout::kBlocked, Layout::kStack})
        sampled += walk(ray, interpolation, layout) > 0;
  }
  EXPECT_GT(sampled, 1000);
}

TEST(Clip, TakesEverySampleThatTheBoxHolds) {
  const SampleBox box = {{0, 0, 0}, {9, 9, 9}};
  const Stretch along = clip(box, {4.5, 4.5, 4.5}, {1, 0, 0});
  EXPECT_EQ(along.first, -4);
  EXPECT_EQ(along.count, 9);
  const Stretch backward = clip(box, {20, 5, 5}, {-2, 0, 0});
  EXPECT_EQ(backward.first, 6);
  EXPECT_EQ(backward.count, 5);
  EXPECT_EQ(clip(box, {20, 5, 5}, {0, 1, 0}).count, 0);
  EXPECT_EQ(clip(box, {-5, 5, 5}, {1, 10, 0}).count, 0);
  EXPECT_EQ(clip(box, {4.5, 4.5, 4.5}, {20, 0, 0}).count, 1);
  EXPECT_EQ(clip(box, {9.5, 4.5, 4.5}, {20, 0, 0}).count, 0);
}

}  // namespace
