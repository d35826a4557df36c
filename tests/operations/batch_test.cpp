// What holds for the batch of every ray caster: which samples are taken and where they go.
#include <limits>

#include "cases.h"
#include "small_batch.h"
#include "small_volumes.h"

namespace zox_test {
namespace {

using Ints = std::vector<int>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Voxel values 0 and 1 suit bits as well.
Cube cube_with_ones(const Caster& caster, std::initializer_list<Point> ones) {
  Cube cube(caster);
  for (const Point& p : ones)
    cube.set(static_cast<int>(p[0]), static_cast<int>(p[1]), static_cast<int>(p[2]), 1);
  return cube;
}

class AnyCaster : public CasterTest {
 protected:
  int run(Batch& batch, Cube& cube) { return batch.run(cast(), cube.volume()); }
};

TEST_P(AnyCaster, SamplesFollowTheStepAlongEachAxis) {
  Cube cube = cube_with_ones(caster(), {{2, 2, 2}, {4, 2, 2}, {2, 4, 2}, {2, 2, 4}});
  for (Point step : {Point{1, 0, 0}, Point{0, 1, 0}, Point{0, 0, 1}}) {
    Batch batch(caster().element_size());
    batch.add({2, 2, 2}, step, 4);
    EXPECT_EQ(run(batch, cube), ZOX_STS_NO_ERROR);
    EXPECT_EQ(batch.samples(0), (Ints{1, 0, 1, 0}));
  }
}

TEST_P(AnyCaster, SamplesFollowANegativeStep) {
  Cube cube = cube_with_ones(caster(), {{5, 5, 5}, {3, 3, 3}});
  Batch batch(caster().element_size());
  batch.add({5, 5, 5}, {-1, -1, -1}, 4);
  EXPECT_EQ(run(batch, cube), ZOX_STS_NO_ERROR);
  // Trilinear casters of slice stacks add half a unit to the step before they cut it toward zero:
  // -1 becomes -1048575 units, and the third sample lies two units above the voxel.
  const bool falls_short = !caster().blocked() && caster().trilinear();
  EXPECT_EQ(batch.samples(0), falls_short ? (Ints{1, 0, 0, 0}) : (Ints{1, 0, 1, 0}));
}

TEST_P(AnyCaster, NoRaysWriteNothing) {
  Cube cube(caster());
  for (int32_t nrays : {0, -1, -2, -64}) {
    Batch batch(caster().element_size());
    batch.add({2, 2, 2}, {1, 0, 0}, 4).pretend(nrays);
    EXPECT_EQ(run(batch, cube), ZOX_STS_NO_ERROR) << nrays << " rays";
  }
}

TEST_P(AnyCaster, CountsAreEachRaysOwn) {
  Cube cube = cube_with_ones(caster(), {{3, 2, 2}, {6, 2, 2}, {2, 5, 2}});
  // The steps suit both traversals of the blocked parallel casters: longer than the rays lie apart,
  // and shorter.
  for (double apart : {1.0 / 64, 3.0}) {
    Batch batch(caster().element_size());
    batch.add({2, 2, 2}, {1, 0, 0}, 3);
    batch.add({2, 2, 2 + apart}, {1, 0, 0}, 0);
    batch.add({2, 2, 2}, {1, 0, 0}, 5);
    EXPECT_EQ(run(batch, cube), ZOX_STS_NO_ERROR);
    EXPECT_EQ(batch.samples(0), (Ints{0, 1, 0}));
    EXPECT_EQ(batch.samples(2), (Ints{0, 1, 0, 0, 1}));
  }
}

TEST_P(AnyCaster, OnlyRaysWithoutSamplesWriteNothing) {
  Cube cube(caster());
  Batch batch(caster().element_size());
  batch.add({2, 2, 2}, {1, 0, 0}, 0).add({2, 2, 3}, {1, 0, 0}, 0);
  EXPECT_EQ(run(batch, cube), ZOX_STS_NO_ERROR);
}

TEST_P(AnyCaster, SixtyFourRaysAreABatch) {
  Cube cube = cube_with_ones(caster(), {{3, 2, 2}, {4, 6, 2}, {2, 2, 5}});
  Batch batch(caster().element_size());
  for (int r = 0; r < 64; ++r) {
    batch.add({static_cast<double>(r % 7), static_cast<double>(r / 9), 2}, {1, 0, 0}, r % 4 % 2 + 1);
  }
  EXPECT_EQ(run(batch, cube), ZOX_STS_NO_ERROR);
  for (int r = 0; r < 64; ++r) {
    for (int k = 0; k < r % 4 % 2 + 1; ++k) {
      const int x = r % 7 + k;
      const int y = r / 9;
      EXPECT_EQ(batch.at(k, r), (x == 3 && y == 2) || (x == 4 && y == 6) ? 1 : 0) << "ray " << r;
    }
  }
}

INSTANTIATE_FOR_CASTERS(AnyCaster, every_caster);

class DivergentCaster : public AnyCaster {};

TEST_P(DivergentCaster, EveryRayHasItsOwnStep) {
  Cube cube = cube_with_ones(caster(), {{3, 2, 2}, {2, 3, 2}, {2, 2, 4}});
  Batch batch(caster().element_size());
  batch.add({2, 2, 2}, {1, 0, 0}, 3).add({2, 2, 2}, {0, 0.5, 0}, 3).add({2, 2, 2}, {0, 0, 1}, 3);
  EXPECT_EQ(run(batch, cube), ZOX_STS_NO_ERROR);
  EXPECT_EQ(batch.samples(0), (Ints{0, 1, 0}));
  // Half a step is a whole voxel for the nearest casters and half of one for the trilinear ones.
  EXPECT_EQ(batch.samples(1), caster().trilinear() ? (Ints{0, 0, 1}) : (Ints{0, 1, 1}));
  EXPECT_EQ(batch.samples(2), (Ints{0, 0, 1}));
}

INSTANTIATE_FOR_CASTERS(DivergentCaster, [](const Caster& c) { return !c.parallel(); });

class ParallelCaster : public AnyCaster {};

TEST_P(ParallelCaster, AllRaysHaveTheStepOfRay0) {
  Cube cube = cube_with_ones(caster(), {{3, 2, 2}, {3, 5, 5}});
  for (Point ignored : {Point{0, 1, 0}, Point{kNaN, kNaN, kNaN}}) {
    Batch batch(caster().element_size());
    batch.add({2, 2, 2}, {1, 0, 0}, 3).add({2, 5, 5}, ignored, 3).add({1, 2, 2}, ignored, 3);
    EXPECT_EQ(run(batch, cube), ZOX_STS_NO_ERROR);
    EXPECT_EQ(batch.samples(0), (Ints{0, 1, 0}));
    EXPECT_EQ(batch.samples(1), (Ints{0, 1, 0}));
    EXPECT_EQ(batch.samples(2), (Ints{0, 0, 1}));
  }
}

INSTANTIATE_FOR_CASTERS(ParallelCaster, [](const Caster& c) { return c.parallel(); });

// Divergent casters and those that sort samples by slice take a negative count for none.
class NegativeCount : public AnyCaster {};

TEST_P(NegativeCount, IsNoSamples) {
  Cube cube = cube_with_ones(caster(), {{3, 2, 2}});
  Batch batch(caster().element_size());
  batch.add({2, 2, 2}, {1, 0, 0}, -3).add({2, 2, 2}, {1, 0, 0}, 2).add({2, 2, 2}, {1, 0, 0}, -1);
  EXPECT_EQ(run(batch, cube), ZOX_STS_NO_ERROR);
  EXPECT_EQ(batch.samples(1), (Ints{0, 1}));
}

INSTANTIATE_FOR_CASTERS(NegativeCount,
                        [](const Caster& c) { return !c.parallel() || (!c.blocked() && c.trilinear()); });

// Only the blocked casters with a step for every ray have no limit on the number of rays, and those
// with one step walk ray by ray beyond 64.
class BlockedCaster : public AnyCaster {};

TEST_P(BlockedCaster, TakesMoreThan64Rays) {
  Cube cube = cube_with_ones(caster(), {{3, 2, 2}});
  Batch batch(caster().element_size());
  for (int r = 0; r < 200; ++r) batch.add({2, r % 2 + 1.0, 2}, {1, 0, 0}, 2);
  EXPECT_EQ(run(batch, cube), ZOX_STS_NO_ERROR);
  for (int r = 0; r < 200; ++r) EXPECT_EQ(batch.samples(r), (Ints{0, r % 2})) << "ray " << r;
}

INSTANTIATE_FOR_CASTERS(BlockedCaster, [](const Caster& c) { return c.blocked(); });

}  // namespace
}  // namespace zox_test
