// Which way a blocked parallel caster goes through a batch: ray by ray or sample by sample. The ways
// differ in the last bit of the positions of all rays but the first, so a start that sits on the
// brink of two results tells the way from the value of a sample.
#include <cmath>
#include <limits>

#include "cases.h"
#include "small_batch.h"
#include "small_volumes.h"

namespace zox_test {
namespace {

enum Way { kRayByRay, kSampleBySample };

// y of ray 0 and of all other rays; the volume's values at y = 0 and from 1 on; the value of the
// other rays' first sample by either way.
struct Brink {
  double first_y, other_y;
  int below, above;
  int by_ray, by_sample;
};

// 0.5 + 0.5 is voxel 1, but (0.5 - 0.9) + (0.9 + 0.5) = 0.9999999999999999 is voxel 0.
constexpr Brink kNearestBrink = {0.9, 0.5, 0, 1, 1, 0};
// 0.1 * 1000 is 100, but (0.1 - 0.4) + 0.4 = 0.09999999999999998.
constexpr Brink kDoubleBrink = {0.4, 0.1, 0, 1000, 100, 99};
// 1048575.5 units are cut to 1048575, a unit short of voxel 1; cut as an offset of -262144.5 from
// 1310720 they are 1048576.
constexpr Brink kFixedBrink = {1.25, 1.0 - 1.0 / 2097152, 0, 255, 254, 255};

class Traversal : public CasterTest {
 protected:
  bool is_8u() const { return caster().element_size() == 1; }
  double x_weight() const { return is_8u() ? 12.0 : 6.0; }

  Brink brink() const {
    if (!caster().trilinear()) return kNearestBrink;
    return is_8u() ? kFixedBrink : kDoubleBrink;
  }
  // The distance in y that every other ray has from the first.
  double gap() const { return std::fabs(brink().other_y - brink().first_y); }

  // A ray for each (x, z); its y is the brink's. Rays beyond `nonempty` have no samples.
  Way way(const std::vector<Point>& starts, Point step, size_t nonempty = 1000) {
    const Brink b = brink();
    Blocked blocked(caster().element_size(), 64, 32);
    blocked.fill([&](int, int y, int) { return y < 1 ? b.below : b.above; });
    Batch batch(caster().element_size());
    for (size_t r = 0; r < starts.size(); ++r) {
      batch.add({starts[r][0], r == 0 ? b.first_y : b.other_y, starts[r][2]}, step, r < nonempty ? 1 : 0);
    }
    EXPECT_EQ(batch.run(cast(), blocked.volume()), ZOX_STS_NO_ERROR);
    const int sample = batch.at(0, 1);
    EXPECT_TRUE(sample == b.by_ray || sample == b.by_sample) << sample;
    return sample == b.by_ray ? kRayByRay : kSampleBySample;
  }
};

const std::vector<Point> kTogether = {{2, 0, 2}, {2, 0, 2}};
const std::vector<Point> kApartInX = {{2, 0, 2}, {3, 0, 2}};
const std::vector<Point> kApartInZ = {{2, 0, 2}, {2, 0, 3}};

TEST_P(Traversal, AZeroStepGoesRayByRay) { EXPECT_EQ(way(kTogether, {0, 0, 0}), kRayByRay); }

// The middle ray has no samples, but its distances count: in doubles they make the rays lie far apart;
// in fixed point it lies at -2^31, which has no opposite: the rays lie less than nothing apart.
TEST_P(Traversal, ARayFarAwayCounts) {
  for (double far : {-1e9, 1e9}) {
    Blocked blocked(caster().element_size(), 64, 32);
    const Brink b = brink();
    blocked.fill([&](int, int y, int) { return y < 1 ? b.below : b.above; });
    Batch batch(caster().element_size());
    batch.add({20, b.first_y, 5}, {0, 0, .25}, 1).add({far, b.first_y, 5}, {0, 0, 0}, 0);
    batch.add({5, b.other_y, 5}, {0, 0, 0}, 1);
    EXPECT_EQ(batch.run(cast(), blocked.volume()), ZOX_STS_NO_ERROR);
    const bool fixed = caster().trilinear() && is_8u();
    EXPECT_EQ(batch.at(0, 2), fixed ? b.by_sample : b.by_ray) << far;
  }
}

// Starts that are not numbers, of rays without samples, keep nothing apart.
TEST_P(Traversal, ARayNowhereDoesNotCount) {
  if (caster().trilinear() && is_8u()) return;  // in integers there is nothing else than numbers
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(way({{2, 0, 2}, {2, 0, 2}, {kNaN, 0, kNaN}}, {0, 0, 1}, 2), kSampleBySample);
  EXPECT_EQ(way({{2, 0, 2}, {2, 0, 2}, {2, 0, kNaN}}, {0, 0, 1}, 2), kSampleBySample);
}

TEST_P(Traversal, AStepShorterThanTheSpacingGoesRayByRay) {
  EXPECT_EQ(way(kApartInZ, {0, 0, 0.5}), kRayByRay);
  EXPECT_EQ(way(kApartInZ, {0, 0, -0.5}), kRayByRay);
}

TEST_P(Traversal, AStepLongerThanTheSpacingGoesSampleBySample) {
  EXPECT_EQ(way(kApartInX, {0, 0, 0.5}), kSampleBySample);
  EXPECT_EQ(way(kApartInZ, {0, 0, 1.5}), kSampleBySample);
  EXPECT_EQ(way(kApartInZ, {0, 0, -1.5}), kSampleBySample);
}

// Equality goes ray by ray; one unit more goes sample by sample.
TEST_P(Traversal, TheComparisonIsStrict) {
  const double unit = 1.0 / 1048576;
  EXPECT_EQ(way({{2, 0, 2}, {2, 0, 2.5}}, {0, 0, 0.5}), kRayByRay);
  EXPECT_EQ(way({{2, 0, 2}, {2, 0, 2.5}}, {0, 0, 0.5 + unit}), kSampleBySample);
  EXPECT_EQ(way({{2, 0, 2}, {2, 0, 2.5}}, {0, 0, -0.5 - unit}), kSampleBySample);
  EXPECT_EQ(way({{2, 0, 2}, {7, 0, 2}}, {5, 0, 0}), kRayByRay);
  EXPECT_EQ(way({{2, 0, 2}, {7, 0, 2}}, {-5 - unit, 0, 0}), kSampleBySample);
}

// A voxel in x is 1/12 for 8-bit voxels and 1/6 for 16-bit ones: a step of 0.1 in z lies between.
TEST_P(Traversal, SpacingInXCountsByTheVoxelType) {
  EXPECT_EQ(way(kApartInX, {0, 0, 0.1}), is_8u() ? kSampleBySample : kRayByRay);
  EXPECT_EQ(way(kApartInX, {0, 0, 0.08}), kRayByRay);
  EXPECT_EQ(way(kApartInX, {0, 0, 0.17}), kSampleBySample);
}

// The same of the step, against rays 0.5 apart in z: 5 voxels are 0.4167 or 0.8333.
TEST_P(Traversal, AStepInXCountsByTheVoxelType) {
  const std::vector<Point> starts = {{2, 0, 2}, {2, 0, 2.5}};
  EXPECT_EQ(way(starts, {5, 0, 0}), is_8u() ? kRayByRay : kSampleBySample);
  EXPECT_EQ(way(starts, {2.9, 0, 0}), kRayByRay);
  EXPECT_EQ(way(starts, {6.1, 0, 0}), kSampleBySample);
}

// Spacing and step in x alone weigh alike, whatever the weight.
TEST_P(Traversal, XAgainstXNeedsNoWeight) {
  EXPECT_EQ(way(kApartInX, {0.9, 0, 0}), kRayByRay);
  EXPECT_EQ(way(kApartInX, {0.1, 0, 0}), kRayByRay);
  EXPECT_EQ(way(kApartInX, {1.1, 0, 0}), kSampleBySample);
  EXPECT_EQ(way(kApartInX, {12, 0, 0}), kSampleBySample);
}

TEST_P(Traversal, YCountsOneSixth) {
  EXPECT_EQ(way(kTogether, {0, 0, gap() / 6 * 0.99}), kRayByRay);
  EXPECT_EQ(way(kTogether, {0, 0, gap() / 6 * 1.01}), kSampleBySample);
  EXPECT_EQ(way(kApartInZ, {0, 5.9, 0}), kRayByRay);
  EXPECT_EQ(way(kApartInZ, {0, 6.1, 0}), kSampleBySample);
}

// Rays to and fro: each is 1 from the one before it, and on average half as far from the first.
TEST_P(Traversal, SpacingIsFromRayToRay) {
  const std::vector<Point> starts = {{2, 0, 2}, {2, 0, 3}, {2, 0, 2}, {2, 0, 3}, {2, 0, 2}};
  EXPECT_EQ(way(starts, {0, 0, 0.75}), kRayByRay);
  EXPECT_EQ(way(starts, {0, 0, 1.25}), kSampleBySample);
}

// One wide gap among narrow ones: the mean is 0.8, the largest 4.
TEST_P(Traversal, SpacingIsAMean) {
  const std::vector<Point> starts = {{2, 0, 2}, {2, 0, 2}, {2, 0, 6}, {2, 0, 6}, {2, 0, 6}, {2, 0, 6}};
  EXPECT_EQ(way(starts, {0, 0, 0.79}), kRayByRay);
  EXPECT_EQ(way(starts, {0, 0, 0.81}), kSampleBySample);
}

// Six rays with gaps of 3 in all: (3 / 5) / 12 is 0.049999999999999996 and (3 / 5) / 6 is
// 0.09999999999999999, while 3 / 12 / 5 and 3 / 6 / 5 are 0.05 and 0.1. With gaps of 11 in all the
// mean weighs the larger: 0.18333333333333335 and 0.3666666666666667.
TEST_P(Traversal, TheMeanIsFormedBeforeItIsWeighed) {
  const std::vector<Point> three = {{0, 0, 2}, {1, 0, 2}, {2, 0, 2}, {3, 0, 2}, {3, 0, 2}, {3, 0, 2}};
  EXPECT_EQ(way(three, {0, 0, is_8u() ? 0.05 : 0.1}), kSampleBySample);
  const std::vector<Point> eleven = {{0, 0, 2}, {3, 0, 2}, {6, 0, 2}, {9, 0, 2}, {11, 0, 2}, {11, 0, 2}};
  EXPECT_EQ(way(eleven, {0, 0, is_8u() ? 0.18333333333333335 : 0.3666666666666667}), kRayByRay);
}

// 5 / 12 is 0.4166666666666667 and 5 / 6 is 0.8333333333333334; times a rounded 1/12 or 1/6 they
// would only equal the spacing. (In fixed point the spacing is a little less in any case.)
TEST_P(Traversal, WeighingIsADivision) {
  const double spacing = is_8u() ? 0.41666666666666663 : 0.8333333333333333;
  EXPECT_EQ(way({{2, 0, 0}, {2, 0, spacing}}, {5, 0, 0}), kSampleBySample);
}

TEST_P(Traversal, RaysWithoutSamplesCountInTheSpacing) {
  const std::vector<Point> starts = {{2, 0, 2}, {2, 0, 2}, {2, 0, 6}};
  EXPECT_EQ(way(starts, {0, 0, 1}, 2), kRayByRay);  // the mean is 2
  EXPECT_EQ(way(starts, {0, 0, 2.5}, 2), kSampleBySample);
}

TEST_P(Traversal, MoreThan64RaysGoRayByRay) {
  EXPECT_EQ(way(std::vector<Point>(64, Point{2, 0, 2}), {0, 0, 1}), kSampleBySample);
  EXPECT_EQ(way(std::vector<Point>(65, Point{2, 0, 2}), {0, 0, 1}), kRayByRay);
}

INSTANTIATE_FOR_CASTERS(Traversal, [](const Caster& c) { return c.blocked() && c.parallel(); });

}  // namespace
}  // namespace zox_test
