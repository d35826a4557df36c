// What the tables of blocks say is never passed by a voxel, and reached by one of the blocks asked for.
#include "volume/bounds.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace zox_test {
namespace {

using render::Size3;

struct Samples {
  Size3 size;
  std::vector<int16_t> all;
  int16_t at(int x, int y, int z) const {
    return all[static_cast<size_t>((int64_t{z} * size[1] + y) * size[0] + x)];
  }
};

Samples random_samples(const Size3& size, int lowest, int step, int count, unsigned seed) {
  std::mt19937 random(seed);
  Samples samples{size, {}};
  samples.all.resize(static_cast<size_t>(size[0]) * static_cast<size_t>(size[1]) *
                     static_cast<size_t>(size[2]));
  for (int16_t& sample : samples.all)
    sample = static_cast<int16_t>(lowest + step * static_cast<int>(random() % static_cast<unsigned>(count)));
  return samples;
}

render::Bounds bounds_of(const Samples& samples, const render::Levels& levels) {
  render::Work work(nullptr);
  const auto read_row = [&](int y, int z, int16_t* row) {
    for (int x = 0; x < samples.size[0]; ++x) row[x] = samples.at(x, y, z);
  };
  return render::make_bounds(samples.size, levels, read_row, work);
}

struct Extremes {
  int low = INT16_MAX, high = INT16_MIN;
};

// Over the voxels low .. high, both included.
Extremes extremes(const Samples& samples, const Size3& low, const Size3& high) {
  Extremes found;
  for (int z = low[2]; z <= high[2]; ++z)
    for (int y = low[1]; y <= high[1]; ++y)
      for (int x = low[0]; x <= high[0]; ++x) {
        found.low = std::min<int>(found.low, samples.at(x, y, z));
        found.high = std::max<int>(found.high, samples.at(x, y, z));
      }
  return found;
}

// The voxels that the blocks of these edges tell of when they are asked for some cells.
Extremes of_blocks(const Samples& samples, Size3 low, Size3 high, const Size3& edges) {
  for (size_t a = 0; a < 3; ++a) {
    low[a] -= low[a] % edges[a];
    high[a] = std::min(high[a] - high[a] % edges[a] + edges[a], samples.size[a] - 1);
  }
  return extremes(samples, low, high);
}

// Boxes of cells against every voxel of their blocks. Levels between samples bound them by less than one.
void expect_bounds(const Samples& samples, const render::Levels& levels, const Size3& edges, int slack) {
  const render::Bounds bounds = bounds_of(samples, levels);
  ASSERT_FALSE(bounds.empty());
  EXPECT_LE(static_cast<double>(bounds.bytes()), 0.03 * 2 * static_cast<double>(samples.all.size()) + 96);
  const Size3 wide = {2 * edges[0], 2 * edges[1], 2 * edges[2]};
  std::mt19937 random(7);
  for (int i = 0; i < 400; ++i) {
    Size3 low, high;
    for (size_t a = 0; a < 3; ++a) {
      const int longest = i % 3 == 0 ? samples.size[a] : 9;
      low[a] = static_cast<int>(random() % static_cast<unsigned>(samples.size[a]));
      high[a] =
          std::min(low[a] + static_cast<int>(random() % static_cast<unsigned>(longest)), samples.size[a] - 1);
    }
    const int fine = of_blocks(samples, low, high, edges).high;
    const Extremes coarse = of_blocks(samples, low, high, wide);
    EXPECT_GE(bounds.largest.over(low, high), fine) << i;
    EXPECT_LE(bounds.largest.over(low, high), fine + slack) << i;
    EXPECT_GE(bounds.coarse_largest.over(low, high), coarse.high) << i;
    EXPECT_LE(bounds.coarse_largest.over(low, high), coarse.high + slack) << i;
    EXPECT_LE(bounds.smallest.over(low, high), coarse.low) << i;
    EXPECT_GE(bounds.smallest.over(low, high), coarse.low - slack) << i;
  }
}

constexpr Size3 kSizes[] = {{67, 42, 35}, {64, 64, 64}, {130, 33, 50}, {301, 21, 18}};

TEST(Bounds, OfSixteenBits) {
  for (const Size3& size : kSizes)
    for (const int count : {2, 60000})
      expect_bounds(random_samples(size, -30000, 1, count, 1), {}, {4, 4, 4}, 0);
}

TEST(Bounds, OfLevels) {
  for (const Size3& size : kSizes)
    for (const int shift : {0, 7}) {
      const Samples samples = random_samples(size, -32767, 1 << shift, 256, 2);
      expect_bounds(samples, {true, -32767, shift}, {4, 4, 2}, 0);
    }
}

TEST(Bounds, OfSamplesBetweenLevels) {
  const Samples samples = random_samples(kSizes[0], -1000, 1, 128 * 255, 3);
  expect_bounds(samples, {true, -1000, 7}, {4, 4, 2}, 127);
}

TEST(Bounds, OfThinVolumesAreCoarserOrNone) {
  EXPECT_TRUE(bounds_of(random_samples({20, 2, 2}, 0, 1, 9, 4), {}).empty());
  const Samples thin = random_samples({90, 90, 5}, 0, 1, 9, 5);
  const render::Bounds bounds = bounds_of(thin, {});
  ASSERT_FALSE(bounds.empty());
  EXPECT_LE(static_cast<double>(bounds.bytes()), 0.03 * 2 * static_cast<double>(thin.all.size()) + 96);
  EXPECT_EQ(bounds.largest.over({0, 0, 0}, {89, 89, 4}), extremes(thin, {0, 0, 0}, {89, 89, 4}).high);
}

render::Levels levels_of(int type, double low, double high, double slope = 1, bool fine = true) {
  render::Array array;
  array.type = type;
  array.slope = slope;
  return render::levels_of(array, render::choose_storage(array, low, high, fine, 65534));
}

TEST(Levels, AreUsedForVoxelsOfEightBits) {
  for (const double slope : {1.0, -1.0}) {
    EXPECT_TRUE(levels_of(ZOX_RENDER_UINT8, 0, 255, slope).used);
    EXPECT_TRUE(levels_of(ZOX_RENDER_INT8, -128, 127, slope).used);
    EXPECT_TRUE(levels_of(ZOX_RENDER_UINT8, 3, 9, slope, false).used);
    EXPECT_FALSE(levels_of(ZOX_RENDER_INT16, 0, 9, slope).used);
  }
  EXPECT_EQ(levels_of(ZOX_RENDER_UINT8, 0, 255).sample(255), 255 * 128);
  // Of a whole whose other parts hold more than eight bits do.
  EXPECT_FALSE(levels_of(ZOX_RENDER_UINT8, -1000, 255).used);
}

}  // namespace
}  // namespace zox_test
