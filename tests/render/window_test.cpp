// From samples to display bytes, and what windows are made of: histogram, percentiles, merging.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "effort.h"
#include "library.h"

using namespace zox_test;

namespace {

// The byte of a value, and whether rounding may decide between it and the one below.
struct Byte {
  int at_least, at_most;
};
Byte byte_of(double value, double center, double width) {
  const double low = center - width / 2, high = center + width / 2;
  const double granted = 1e-9 * (std::abs(center) + std::abs(value) + width);
  if (value <= low - granted) return {0, 0};
  if (value >= high + granted) return {255, 255};
  const double level = 255 * (value - low) / width;
  const double play = 255 * granted / width + 1e-9;
  return {std::clamp(static_cast<int>(std::floor(level - play)), 0, 255),
          value >= high - granted ? 255 : std::clamp(static_cast<int>(std::floor(level + play)), 0, 255)};
}

TEST(Window, IsLinearAndTruncatedBetweenBlackAndWhite) {
  std::vector<int16_t> samples;
  for (int sample = -32768; sample <= 32767; ++sample) samples.push_back(static_cast<int16_t>(sample));
  std::vector<uint8_t> pixels(samples.size());
  const struct {
    double slope, intercept, center, width;
  } windows[] = {{1, 0, 0, 100},           {1, 0, 128, 255},   {0.5, -1024, 40, 400},
                 {1, 0, 0.5, 1},           {1, 0, 7.25, 1e-6}, {3, 1e6, 1e6, 196605.0},
                 {1e-30, 0, 1e-27, 3e-27}, {1, 0, 0, 1e9},     {1 / 128.0, 0, 80, 37}};
  for (const auto& window : windows) {
    SCOPED_TRACE("window " + std::to_string(window.center) + ", " + std::to_string(window.width));
    ASSERT_EQ(zox_render_window(window.slope, window.intercept, window.center, window.width,
                                static_cast<int64_t>(samples.size()), samples.data(), pixels.data()),
              ZOX_RENDER_OK)
        << zox_render_last_error();
    EXPECT_EQ(pixels[0], 0) << "NOTHING is black";
    int wrong = 0;
    for (size_t i = 1; i < samples.size(); ++i) {
      const Byte wanted = byte_of(samples[i] * window.slope + window.intercept, window.center, window.width);
      if (pixels[i] < wanted.at_least || pixels[i] > wanted.at_most)
        if (++wrong < 3)
          ADD_FAILURE() << "sample " << samples[i] << " shows as " << int{pixels[i]} << ", expected "
                        << wanted.at_most;
    }
    EXPECT_EQ(wrong, 0);
  }
}

TEST(Window, HandWorkedBytes) {
  // Black is 0 and white 255: every value is its byte. Then black is 127 and white 129.
  const int16_t samples[] = {-1, 0, 1, 128, 254, 255, 300, ZOX_RENDER_NOTHING};
  uint8_t pixels[8];
  ASSERT_EQ(zox_render_window(1, 0, 127.5, 255, 8, samples, pixels), ZOX_RENDER_OK);
  EXPECT_EQ(std::vector<uint8_t>(pixels, pixels + 8), (std::vector<uint8_t>{0, 0, 1, 128, 254, 255, 255, 0}));
  ASSERT_EQ(zox_render_window(1, 0, 128, 2, 8, samples, pixels), ZOX_RENDER_OK);
  EXPECT_EQ(std::vector<uint8_t>(pixels, pixels + 8), (std::vector<uint8_t>{0, 0, 0, 127, 255, 255, 255, 0}));
}

TEST(Window, OfARenderedPictureIsTheWindowOfItsSamples) {
  const Seeds seeds = zox_test::seeds(1, 60);
  for (uint64_t seed = seeds.first; seed < seeds.first + seeds.count; ++seed) {
    SCOPED_TRACE("ZOX_TEST_SEED=" + std::to_string(seed));
    Random random(seed);
    const auto scene = random_scene(random, random.whole(ZOX_RENDER_UINT8, ZOX_RENDER_FLOAT64), 20);
    zox_render_view view = random_view(random, 40);
    const Volume volume = make_volume(*scene, random.pick({ZOX_RENDER_BRICKS, ZOX_RENDER_STACK}));
    const zox_render_volume_info info = info_of(volume);
    if (random.chance(0.7)) {
      view.window_center = random.real(info.lowest, info.highest);
      view.window_width = random.real(0.01, 2) * (info.highest - info.lowest) + 1e-3;
    }
    const Picture picture = render(volume, view);
    if (picture.status == ZOX_RENDER_EMPTY) continue;
    ASSERT_EQ(picture.status, ZOX_RENDER_OK) << zox_render_last_error();
    double center = view.window_center, width = view.window_width;
    if (width == 0) {
      ASSERT_EQ(zox_render_default_window(volume.get(), &center, &width), ZOX_RENDER_OK);
    }
    EXPECT_EQ(picture.stats.window_center, center);
    EXPECT_EQ(picture.stats.window_width, width);
    std::vector<uint8_t> pixels(picture.samples.size());
    ASSERT_EQ(zox_render_window(info.sample_slope, info.sample_intercept, center, width,
                                static_cast<int64_t>(pixels.size()), picture.samples.data(), pixels.data()),
              ZOX_RENDER_OK)
        << zox_render_last_error();
    EXPECT_EQ(pixels, picture.pixels);
  }
}

TEST(Window, PercentilesAndHistogramCountVoxels) {
  const Seeds seeds = zox_test::seeds(1, 40);
  for (uint64_t seed = seeds.first; seed < seeds.first + seeds.count; ++seed) {
    SCOPED_TRACE("ZOX_TEST_SEED=" + std::to_string(seed));
    Random random(seed);
    const int type = random.pick({ZOX_RENDER_UINT8, ZOX_RENDER_INT16, ZOX_RENDER_UINT16});
    const auto scene = random_scene(random, type, 20);
    const Volume volume = make_volume(*scene, random.pick({ZOX_RENDER_BRICKS, ZOX_RENDER_STACK}));
    const zox_render_volume_info info = info_of(volume);
    std::vector<double> values;
    for (const double voxel : scene->voxels)
      values.push_back(voxel * scene->array.slope + scene->array.intercept);
    std::sort(values.begin(), values.end());
    if (!info.exact) continue;  // values in steps of their own
    EXPECT_EQ(info.lowest, values.front());
    EXPECT_EQ(info.highest, values.back());
    const double n = static_cast<double>(values.size());
    for (const double share : {0.0, 0.25, 0.5, 0.75, 0.9999, 1.0}) {
      double found = 0;
      ASSERT_EQ(zox_render_percentile(volume.get(), share, &found), ZOX_RENDER_OK);
      const size_t rank = static_cast<size_t>(std::max(1.0, std::ceil(share * n - 1e-6)));
      EXPECT_NEAR(found, values[rank - 1], 1e-9) << share;
    }
    for (const int bins : {1, 2, 7, 256}) {
      std::vector<uint64_t> counts(static_cast<size_t>(bins), 77), wanted(counts.size(), 0);
      ASSERT_EQ(zox_render_histogram(volume.get(), bins, counts.data()), ZOX_RENDER_OK);
      uint64_t sum = 0;
      for (const uint64_t count : counts) sum += count;
      EXPECT_EQ(sum, values.size());
      // Exactly between two bins rounding may decide, so whole counts are compared where it cannot.
      const double width = (info.highest - info.lowest) / bins;
      bool decided = width > 0;
      for (const double value : values) {
        const double bin = width > 0 ? (value - info.lowest) / width : 0;
        decided = decided &&
                  (std::abs(bin - std::round(bin)) > 1e-9 || value == info.lowest || value == info.highest);
        ++wanted[static_cast<size_t>(std::clamp(bin, 0.0, bins - 1.0))];
      }
      if (decided) {
        EXPECT_EQ(counts, wanted) << bins;
      }
    }
  }
}

TEST(Window, TheDefaultGoesFromThreeQuartersToAllButOneInTenThousand) {
  std::vector<double> voxels;
  for (int i = 0; i < 20000; ++i) voxels.push_back(i);
  const auto counted = make_scene(ZOX_RENDER_INT16, {20, 40, 25}, voxels);
  double center = 0, width = 0;
  ASSERT_EQ(zox_render_default_window(make_volume(*counted, ZOX_RENDER_STACK).get(), &center, &width), 0);
  // 15000 voxels do not exceed 14999, and all but two do not exceed 19997.
  EXPECT_EQ(center - width / 2, 14999);
  EXPECT_EQ(center + width / 2, 19997);
  // One voxel of 8000 is more than one in ten thousand: black and white are not both 0.
  voxels.assign(8000, 0);
  voxels[77] = 500;
  const auto sparse = make_scene(ZOX_RENDER_INT16, {20, 20, 20}, voxels);
  ASSERT_EQ(zox_render_default_window(make_volume(*sparse, ZOX_RENDER_BRICKS).get(), &center, &width), 0);
  EXPECT_EQ(center - width / 2, 0);
  EXPECT_EQ(center + width / 2, 500);
  // One of 20000 is less, so the two are one value, and white is the largest.
  voxels.assign(20000, 3);
  voxels[77] = 500;
  const auto rare = make_scene(ZOX_RENDER_INT16, {20, 40, 25}, voxels);
  ASSERT_EQ(zox_render_default_window(make_volume(*rare, ZOX_RENDER_BRICKS).get(), &center, &width), 0);
  EXPECT_EQ(center - width / 2, 3);
  EXPECT_EQ(center + width / 2, 500);
}

TEST(Merge, TakesTheWinnerOfEveryPixel) {
  const int16_t nothing = ZOX_RENDER_NOTHING;
  const int32_t none = ZOX_RENDER_NO_DEPTH;
  const std::vector<int16_t> a = {5, -7, nothing, 3, nothing, 4, -6}, b = {6, 6, -9, nothing, nothing, 4, 6};
  const std::vector<int32_t> da = {1, 2, none, 4, none, 9, -3}, db = {-1, -2, -3, none, none, -9, 5};
  const struct {
    int reduction;
    std::vector<int16_t> samples;
    std::vector<int32_t> depths;
  } cases[] = {{ZOX_RENDER_MAXIMUM, {6, 6, -9, 3, nothing, 4, 6}, {-1, -2, -3, 4, none, -9, 5}},
               {ZOX_RENDER_MINIMUM, {5, -7, -9, 3, nothing, 4, -6}, {1, 2, -3, 4, none, -9, -3}},
               {ZOX_RENDER_LARGEST_MAGNITUDE, {6, -7, -9, 3, nothing, 4, 6}, {-1, 2, -3, 4, none, -9, 5}}};
  for (const auto& one : cases)
    for (const bool swapped : {false, true}) {
      std::vector<int16_t> samples = swapped ? b : a;
      std::vector<int32_t> depths = swapped ? db : da;
      ASSERT_EQ(zox_render_merge(one.reduction, 1, 0, 7, samples.data(), depths.data(),
                                 (swapped ? a : b).data(), (swapped ? da : db).data()),
                ZOX_RENDER_OK)
          << zox_render_last_error();
      EXPECT_EQ(samples, one.samples) << one.reduction;
      EXPECT_EQ(depths, one.depths) << one.reduction;
      samples = swapped ? b : a;
      ASSERT_EQ(zox_render_merge(one.reduction, 1, 0, 7, samples.data(), nullptr, (swapped ? a : b).data(),
                                 nullptr),
                ZOX_RENDER_OK);
      EXPECT_EQ(samples, one.samples) << "without depths";
    }
}

TEST(Merge, JudgesByValues) {
  int16_t into[] = {-10}, other[] = {9};  // -9 and 10 with an intercept of 1
  ASSERT_EQ(zox_render_merge(ZOX_RENDER_LARGEST_MAGNITUDE, 1, 1, 1, into, nullptr, other, nullptr), 0);
  EXPECT_EQ(into[0], 9);
}

TEST(Merge, RefusesAMeanAndDepthsOfOneOnly) {
  int16_t samples[1] = {0};
  int32_t depths[1] = {0};
  EXPECT_EQ(zox_render_merge(ZOX_RENDER_MEAN, 1, 0, 1, samples, nullptr, samples, nullptr),
            ZOX_RENDER_BAD_ARGUMENT);
  EXPECT_EQ(zox_render_merge(ZOX_RENDER_MAXIMUM, 1, 0, 1, samples, depths, samples, nullptr),
            ZOX_RENDER_BAD_ARGUMENT);
  EXPECT_EQ(zox_render_merge(7, 1, 0, 1, samples, nullptr, samples, nullptr), ZOX_RENDER_BAD_ARGUMENT);
  EXPECT_EQ(zox_render_merge(ZOX_RENDER_MAXIMUM, 1, 0, -1, samples, nullptr, samples, nullptr),
            ZOX_RENDER_BAD_ARGUMENT);
  EXPECT_EQ(zox_render_merge(ZOX_RENDER_MAXIMUM, 1, 0, 1, nullptr, nullptr, samples, nullptr),
            ZOX_RENDER_BAD_ARGUMENT);
}

}  // namespace
