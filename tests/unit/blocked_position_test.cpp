// Where the samples of rays through blocked volumes lie: the same step, kept in fixed point or in
// doubles, leads to different voxels.
#include <cmath>

#include "cases.h"
#include "small_batch.h"
#include "small_volumes.h"

namespace zox_test {
namespace {

using Ints = std::vector<int>;

// Casts one ray along x (or y, or z) through a volume whose voxels have the value of that coordinate,
// and a second ray beside it. The second ray decides how parallel casters go: close to the first,
// they go sample by sample, and far from it ray by ray; the first ray must not differ.
class BlockedPositions : public CasterTest {
 protected:
  void expect(double start, double step, const Ints& expected) {
    for (int axis = 0; axis < 3; ++axis) {
      for (double apart : {0.0, 5.0}) EXPECT_EQ(along(axis, start, step, apart, expected.size()), expected);
    }
  }

  Ints along(int axis, double start, double step, double apart, size_t nsamples) {
    Blocked blocked(caster().element_size(), 64, 32);
    blocked.fill([&](int x, int y, int z) { return value(axis == 0 ? x : axis == 1 ? y : z); });
    Point at = {1, 1, 1}, by = {0, 0, 0};
    at[static_cast<size_t>(axis)] = start;
    by[static_cast<size_t>(axis)] = step;
    const double aside = axis == 2 ? 0 : apart;
    const Point beside = {at[0], axis == 2 ? at[1] + 6 * apart / 5 : at[1], at[2] + aside};
    Batch batch(caster().element_size());
    batch.add(at, by, static_cast<int32_t>(nsamples)).add(beside, by, 1);
    EXPECT_EQ(batch.run(cast(), blocked.volume()), ZOX_STS_NO_ERROR);
    return batch.samples(0);
  }

  // Trilinear: 0 at coordinate 0 and 200 from 1 on, so that 199 tells a hair below coordinate 1.
  int value(int coordinate) const {
    if (!caster().trilinear()) return coordinate;
    return coordinate == 0 ? 0 : 200;
  }
};

class BlockedNearest : public BlockedPositions {};

TEST_P(BlockedNearest, RoundsHalfUp) {
  expect(1.5, 0, {2, 2, 2});
  expect(1.49, 0, {1, 1, 1});
  expect(0.5, 0, {1});
  expect(0.4999, 0, {0});
}

// 0.1 is 104857.6 units, cut to 104857: 524288 + 5 * 104857 = 1048573 is still below voxel 1.
// In doubles five additions of 0.1 to 0.5 give 0.9999999999999999.
TEST_P(BlockedNearest, FiveTenthsDoNotReachTheNextVoxel) { expect(0, 0.1, {0, 0, 0, 0, 0, 0, 1}); }

INSTANTIATE_FOR_CASTERS(BlockedNearest, [](const Caster& c) { return c.blocked() && !c.trilinear(); });

class BlockedDivergentNearest : public BlockedPositions {};

TEST_P(BlockedDivergentNearest, StepsBelowAUnitAreLost) {
  expect(0.5 - kUnit20, kUnit20 / 2, {0, 0, 0, 0, 0});
  expect(0.5 - kUnit20, kUnit20 * 1.5, {0, 1, 1});
}

TEST_P(BlockedDivergentNearest, StartsBelowAUnitAreCutOff) {
  expect(0.5 - kUnit20 / 4, 0, {0});
  expect(0.5 - kUnit20 / 4, kUnit20, {0, 1});
}

// -0.1 is -104857.6 units, cut to -104857: one step down from there lies just on voxel 1.
TEST_P(BlockedDivergentNearest, NegativeStepsAreCutTowardZero) {
  expect(0.5 + 104857 * kUnit20, -0.1, {1, 1});
  expect(0.5 + 104856 * kUnit20, -0.1, {1, 0});
}

INSTANTIATE_FOR_CASTERS(BlockedDivergentNearest,
                        [](const Caster& c) { return c.blocked() && !c.parallel() && !c.trilinear(); });

class BlockedParallelNearest : public BlockedPositions {};

TEST_P(BlockedParallelNearest, PositionsKeepWhatFixedPointLoses) {
  expect(0.5 - kUnit20, kUnit20 / 2, {0, 0, 1, 1});
  expect(0.5 - kUnit20 / 4, kUnit20 / 4, {0, 1});
}

INSTANTIATE_FOR_CASTERS(BlockedParallelNearest,
                        [](const Caster& c) { return c.blocked() && c.parallel() && !c.trilinear(); });

// Divergent 8U and 16S and parallel 16S.
bool trilinear_in_doubles(const Caster& c) {
  return c.blocked() && c.trilinear() && (!c.parallel() || c.element_size() == 2);
}

class BlockedTrilinear : public BlockedPositions {};

// Ten additions of 0.1 give 0.9999999999999999, where ten times 0.1 would be 1.
TEST_P(BlockedTrilinear, PositionsAreAccumulated) {
  expect(0, 0.1, {0, 20, 40, 60, 80, 100, 120, 140, 160, 179, 199, 200});
}

TEST_P(BlockedTrilinear, PositionsKeepWhatFixedPointLoses) {
  expect(0.5, kUnit20 / 256, {100, 100});
  expect(1 - kUnit20 / 256, kUnit20 / 256, {199, 200});
}

INSTANTIATE_FOR_CASTERS(BlockedTrilinear, trilinear_in_doubles);

bool trilinear_in_integers(const Caster& c) {
  return c.blocked() && c.trilinear() && !trilinear_in_doubles(c);
}

class BlockedFixedTrilinear : public BlockedPositions {};

// Ten steps of 104857 units end 6 units short of coordinate 1.
TEST_P(BlockedFixedTrilinear, StepsAreCutTowardZero) {
  EXPECT_EQ(along(0, 0, 0.1, 0, 12)[10], 199);
  EXPECT_EQ(along(0, 0, 0.1, 5, 12)[10], 199);
  EXPECT_EQ(along(0, 0, 0.1, 5, 12)[11], 200);
  expect(1 + 104857 * kUnit20, -0.1, {200, 200});
  expect(1 + 104856 * kUnit20, -0.1, {200, 199});
}

TEST_P(BlockedFixedTrilinear, StartsAndStepsBelowAUnitAreCutOff) {
  expect(1 - kUnit20 / 4, kUnit20 / 2, {199, 199, 199});
  expect(1 - kUnit20 / 4, kUnit20, {199, 200});
}

INSTANTIATE_FOR_CASTERS(BlockedFixedTrilinear, trilinear_in_integers);

}  // namespace
}  // namespace zox_test
