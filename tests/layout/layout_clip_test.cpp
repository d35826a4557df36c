// Cut rays break no duty that the contract checker knows, in any operation, and lose no sample that
// plainly lies inside.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <zox_volume_check.h>
#include <zox_volume_layout.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "effort.h"
#include "operation_list.h"
#include "random.h"

namespace zox_test {
namespace {

constexpr int kScenes = 1500;
constexpr int kMostSamples = 300;
using Point = std::array<double, 3>;

// A volume and the box of its samples. Blocked ones fill their grid, so that the checker sees each border.
struct Scene {
  zox_Volume volume{};
  zox_SampleBox box{};
  Point voxels{}, low{}, extent{};  // extent: of the coordinates, from low
  std::vector<int16_t> data;
  std::vector<const void*> slices;
  std::vector<int32_t> rowoffs, regslice;
  std::vector<double> positions, regbounds, regscale;

  Scene(const Caster& caster, Random& random) {
    if (caster.blocked())
      make_bricks(caster, random);
    else
      make_stack(caster, random);
  }
  ~Scene() { zox_check_forget(volume.data); }
  Scene(const Scene&) = delete;
  Scene& operator=(const Scene&) = delete;

 private:
  void make_bricks(const Caster& caster, Random& random) {
    const int size = random.pick({64, 128}), layers = random.whole(2, 64);
    data.resize(zox_blocked_elements(size, layers));
    volume.data = data.data();
    volume.size = size;
    zox_check_blocked(volume.data, layers);
    box = zox_blocked_box(size, size, layers, caster.trilinear());
    extent = {size - 1.0, size - 1.0, layers - 1.0};
  }

  void make_stack(const Caster& caster, Random& random) {
    const int columns = random.whole(2, 40), rows = random.whole(2, 40), layers = random.whole(2, 40);
    data.resize(static_cast<size_t>(columns * rows * layers));
    slices.resize(static_cast<size_t>(layers) + 1);
    rowoffs.resize(static_cast<size_t>(rows));
    zox_stack_fill(&volume, data.data(), rows, layers, columns * 2, columns * rows * 2, slices.data(),
                   rowoffs.data());
    positions = {random.pick({0.0, -3.0, random.real(-9, 9)})};
    const double spacing = random.pick({1.0, 1.0, 2.5, random.real(0.3, 6)});
    while (positions.size() < static_cast<size_t>(layers))
      positions.push_back(positions.back() + (random.chance(0.1) ? random.real(0.3, 6) : spacing));
    regslice.resize(positions.size());
    regbounds.resize(positions.size() + 1);
    regscale.resize(positions.size());
    zox_stack_regions(&volume, positions.data(), layers, 1e-9, regslice.data(), regbounds.data(),
                      regscale.data());
    zox_check_stack(volume.slices, columns, rows);
    box = zox_stack_box(&volume, columns, rows, caster.trilinear());
    low = {0, 0, positions.front()};
    extent = {columns - 1.0, rows - 1.0, positions.back() - positions.front()};
  }
};

double coordinate(Random& random, double low, double extent) {
  switch (random.whole(0, 3)) {
    case 0:
      return std::floor(random.real(low - 3, low + extent + 3));
    case 1:
      return std::ldexp(std::floor(std::ldexp(random.real(low - 3, low + extent + 3), 20)), -20);
    case 2:
      return random.chance(0.5) ? low : low + extent;
    default:
      return random.real(low - 3, low + extent + 3);
  }
}

double displacement(Random& random) {
  switch (random.whole(0, 4)) {
    case 0:
      return 0;
    case 1:
      return random.pick({1.0, -1.0, 0.5, -0.5});
    case 2:
      return std::ldexp(random.whole(-1000, 1000), -20);
    default:
      return random.real(-1.5, 1.5);
  }
}

// Moves one coordinate of the start so that some sample comes to lie within rounding of the border.
void aim_at_border(const zox_SampleBox& box, Random& random, const Point& step, Point& start) {
  const auto axis = static_cast<size_t>(random.whole(0, 2));
  const double border = random.chance(0.5) ? box.low[axis] : box.high[axis];
  const double off = random.pick({1.0, 10.0, 1000.0}) * random.real(-1, 1) * ZOX_GRID;
  start[axis] = border + off - random.whole(0, kMostSamples / 4) * step[axis];
}

// Far enough inside for any operation: a sample there may not be lost.
bool plainly_inside(const zox_SampleBox& box, const Point& start, const Point& step, int k, int samples) {
  for (size_t a = 0; a < 3; ++a) {
    const double p = start[a] + k * step[a], drift = 2 * (samples + 6);
    if (!(p >= box.low[a] + drift * box.drift_low[a] && p <= box.high[a] - drift * box.drift_high[a]))
      return false;
  }
  return true;
}

template <class Function>
Function* checked(const std::string& name) {
  static void* const checker = dlopen("libzox_volume_check.so", RTLD_LAZY | RTLD_NOLOAD);
  return checker ? reinterpret_cast<Function*>(dlsym(checker, name.c_str())) : nullptr;
}

class LayoutClip : public testing::TestWithParam<int> {};

TEST_P(LayoutClip, KeepsTheCallersDuties) {
  const Caster& caster = kCasters[GetParam()];
  const auto cast =
      checked<int(const zox_Volume*, const zox_Rays*)>(std::string("zox_Volume_RayCast_") + caster.name);
  ASSERT_TRUE(cast);
  int64_t taken = 0;
  const Seeds chosen = seeds(8000000, kScenes);
  for (uint64_t seed = chosen.first; seed < chosen.first + chosen.count; ++seed) {
    Random random(seed);
    const Scene scene(caster, random);
    std::vector<Point> starts, steps;
    std::vector<int32_t> counts;
    Point step = {displacement(random), displacement(random), displacement(random)};
    for (int ray = random.whole(1, 12); ray > 0; --ray) {
      if (!caster.parallel()) step = {displacement(random), displacement(random), displacement(random)};
      Point start;
      for (size_t a = 0; a < 3; ++a) start[a] = coordinate(random, scene.low[a], scene.extent[a]);
      if (random.chance(0.8)) aim_at_border(scene.box, random, step, start);
      const int samples = random.whole(0, kMostSamples);
      int32_t first = -1;
      const int32_t count = zox_clip(&scene.box, start.data(), step.data(), samples, &first);
      ASSERT_TRUE(count >= 0 && first >= 0 && first + count <= samples) << "seed " << seed;
      for (int k = 0; k < samples; ++k)
        if (plainly_inside(scene.box, start, step, k, samples))
          ASSERT_TRUE(first <= k && k < first + count) << "seed " << seed << ", sample " << k;
      if (count == 0) continue;
      for (size_t a = 0; a < 3; ++a) start[a] += first * step[a];
      starts.push_back(start);
      steps.push_back(step);
      counts.push_back(count);
      taken += count;
    }
    const size_t rays = starts.size();
    // All voxels are 0: what stays as it was has not been sampled.
    std::array<int16_t, 12> unsampled;
    unsampled.fill(0x5A5A);
    std::vector<std::array<int16_t, 12>> samples(kMostSamples, unsampled);
    std::vector<void*> planes;
    for (auto& plane : samples) planes.push_back(plane.data());
    std::vector<const double*> start_of, step_of;
    for (size_t r = 0; r < rays; ++r) {
      start_of.push_back(starts[r].data());
      step_of.push_back(steps[r].data());
    }
    if (rays == 0) continue;
    const zox_Rays batch = {planes.data(), static_cast<int32_t>(rays), start_of.data(), step_of.data(),
                            counts.data()};
    testing::internal::CaptureStderr();
    cast(&scene.volume, &batch);
    ASSERT_EQ("", testing::internal::GetCapturedStderr()) << "seed " << seed;
    for (size_t r = 0; r < rays; ++r)
      for (size_t k = 0; k < static_cast<size_t>(counts[r]); ++k) {
        const auto* bytes = reinterpret_cast<const uint8_t*>(samples[k].data());
        ASSERT_EQ(0, bytes[r * static_cast<size_t>(caster.element_size())])
            << "seed " << seed << ", sample " << k;
      }
  }
  EXPECT_GT(taken, 5 * static_cast<int64_t>(chosen.count));
}

INSTANTIATE_TEST_SUITE_P(Casters, LayoutClip, testing::Range(0, kCasterCount),
                         [](const auto& info) { return std::string(kCasters[info.param].name); });

int32_t clip(const zox_SampleBox& box, Point start, Point step, int32_t samples, int32_t expected_first) {
  int32_t first = -1;
  const int32_t count = zox_clip(&box, start.data(), step.data(), samples, &first);
  EXPECT_EQ(expected_first, first);
  return count;
}

TEST(LayoutClipByHand, WholeVoxelsReachTheBorder) {
  const zox_SampleBox nearest = zox_blocked_box(64, 50, 20, 0), trilinear = zox_blocked_box(64, 50, 20, 1);
  EXPECT_EQ(64, clip(nearest, {0, 0, 0}, {1, 0, 0}, 100, 0));
  EXPECT_EQ(64, clip(nearest, {-5, 49, 19}, {1, 0, 0}, 100, 5));
  EXPECT_EQ(64, clip(nearest, {63, 0, 0}, {-1, 0, 0}, 100, 0));
  EXPECT_EQ(63, clip(trilinear, {0, 0, 0}, {1, 0, 0}, 100, 0));
  EXPECT_EQ(63, clip(trilinear, {63, 0, 0}, {-1, 0, 0}, 100, 1));
  EXPECT_EQ(0, clip(trilinear, {0, 49, 0}, {1, 0, 0}, 100, 0));
  EXPECT_EQ(10, clip(nearest, {0, 0, 0}, {1, 0, 0}, 10, 0));
}

TEST(LayoutClipByHand, NothingThatIsNoNumber) {
  const zox_SampleBox box = zox_blocked_box(64, 64, 64, 0);
  const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
  for (const double bad : {nan, inf, -inf, 1e300, -1e300}) {
    EXPECT_EQ(0, clip(box, {bad, 5, 5}, {1, 0, 0}, 100, 0));
    EXPECT_EQ(0, clip(box, {bad, 5, 5}, {0, 0, 1}, 100, 0));
  }
  for (const double bad : {nan, inf, -inf}) EXPECT_EQ(0, clip(box, {5, 5, 5}, {0, bad, 0}, 100, 0));
  EXPECT_EQ(0, clip(box, {5, 5, 5}, {1, 0, 0}, 0, 0));
  EXPECT_EQ(0, clip(box, {5, 5, 5}, {1, 0, 0}, -7, 0));
}

}  // namespace
}  // namespace zox_test
