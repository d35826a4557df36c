// Slice stacks over plain arrays, and the regions that slice positions make.
#include <gtest/gtest.h>
#include <zox_volume_layout.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

struct Regions {
  zox_Volume volume{};
  std::vector<int32_t> slice;
  std::vector<double> bounds, scale;
  int32_t count;

  explicit Regions(const std::vector<double>& positions, double tolerance = 1e-9)
      : slice(positions.size() + 1), bounds(positions.size() + 2), scale(positions.size() + 1) {
    count = zox_stack_regions(&volume, positions.data(), static_cast<int32_t>(positions.size()), tolerance,
                              slice.data(), bounds.data(), scale.data());
    slice.resize(static_cast<size_t>(count));
    scale.resize(static_cast<size_t>(count));
    bounds.resize(count ? static_cast<size_t>(count) + 1 : 0);
  }
};

using Doubles = std::vector<double>;
using Ints = std::vector<int32_t>;

TEST(LayoutStack, EvenSlicesAreOneRegion) {
  const Regions regions({-10, -7.5, -5, -2.5});
  EXPECT_EQ(Ints{0}, regions.slice);
  EXPECT_EQ((Doubles{-10, -2.5}), regions.bounds);
  EXPECT_EQ(Doubles{0.4}, regions.scale);
  EXPECT_EQ(1, regions.volume.nregions);
  EXPECT_EQ(regions.bounds.data(), regions.volume.regbounds);
}

TEST(LayoutStack, AnOddGapIsARegionOfItsOwn) {
  const Regions regions({0, 1, 2, 4, 5, 6});
  EXPECT_EQ((Ints{0, 2, 3}), regions.slice);
  EXPECT_EQ((Doubles{0, 2, 4, 6}), regions.bounds);
  EXPECT_EQ((Doubles{1, 0.5, 1}), regions.scale);
}

TEST(LayoutStack, AnOddGapAtAnEnd) {
  EXPECT_EQ((Doubles{0, 3, 5}), Regions({0, 3, 4, 5}).bounds);
  EXPECT_EQ((Doubles{0, 2, 5}), Regions({0, 1, 2, 5}).bounds);
}

TEST(LayoutStack, EveryGapDiffers) {
  const Regions regions({0, 1, 3, 7, 15});
  EXPECT_EQ((Ints{0, 1, 2, 3}), regions.slice);
  EXPECT_EQ((Doubles{0, 1, 3, 7, 15}), regions.bounds);
  EXPECT_EQ((Doubles{1, 0.5, 0.25, 0.125}), regions.scale);
}

// Positions written with two digits: a third of a millimetre. The ends of the line are rounded too.
TEST(LayoutStack, RoundedPositionsStayOneRegionWithinTheTolerance) {
  const Doubles positions{0, 0.33, 0.67, 1, 1.33, 1.67, 2};
  const Regions even(positions, 0.01);
  EXPECT_EQ(1, even.count);
  EXPECT_DOUBLE_EQ(3, even.scale[0]);
  EXPECT_GT(Regions(positions, 0.001).count, 1);
}

// Each gap within the tolerance of the one before, yet the line bends.
TEST(LayoutStack, SlowlyGrowingGapsAreNotOneRegion) {
  Doubles positions{0};
  for (int i = 0; i < 40; ++i) positions.push_back(positions.back() + 1 + 0.005 * i);
  const Regions regions(positions, 0.01);
  EXPECT_GT(regions.count, 1);
  for (size_t s = 0; s < positions.size(); ++s) {
    size_t j = regions.scale.size() - 1;
    while (positions[s] < regions.bounds[j]) --j;
    EXPECT_NEAR(static_cast<double>(s),
                regions.slice[j] + (positions[s] - regions.bounds[j]) * regions.scale[j], 0.0101);
  }
}

TEST(LayoutStack, OneSlice) {
  const Regions regions({5});
  EXPECT_EQ(Ints{0}, regions.slice);
  EXPECT_EQ((Doubles{5, 6}), regions.bounds);
  EXPECT_EQ(Doubles{1}, regions.scale);
}

TEST(LayoutStack, PositionsMustAscend) {
  const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(0, Regions({}).count);
  EXPECT_EQ(0, Regions({0, 0}).count);
  EXPECT_EQ(0, Regions({0, 1, 2, 1.5}).count);
  EXPECT_EQ(0, Regions({nan}).count);
  EXPECT_EQ(0, Regions({0, nan, 2}).count);
  EXPECT_EQ(0, Regions({-inf, 0}).count);
  EXPECT_EQ(0, Regions({0, inf}).count);
}

TEST(LayoutStack, TheLastPointerIsRepeated) {
  const uint8_t voxels[2 * 3 * 4] = {};
  const void* slices[5];
  int32_t rowoffs[3];
  zox_Volume volume{};
  // From the last row and the last slice backwards.
  zox_stack_fill(&volume, voxels + 18 + 4, 3, 4, -2, -6, slices, rowoffs);
  EXPECT_EQ(4, volume.nslices);
  EXPECT_EQ(slices, volume.slices);
  EXPECT_EQ(rowoffs, volume.rowoffs);
  for (int s = 0; s < 4; ++s) EXPECT_EQ(voxels + 22 - 6 * s, slices[s]);
  EXPECT_EQ(slices[3], slices[4]);
  EXPECT_EQ(0, rowoffs[0]);
  EXPECT_EQ(-4, rowoffs[2]);
}

}  // namespace
