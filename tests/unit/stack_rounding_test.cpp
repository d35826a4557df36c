// Slice stacks, casters that sort samples by slice: how starts, steps and boundaries become fixed
// point. Each question is put to a ray that stands some units short of coordinate 1 (or half a
// voxel before it where voxels are nearest): does a sample get there?
#include "cases.h"
#include "small_batch.h"
#include "small_volumes.h"

namespace zox_test {
namespace {

// Where the parallel nearest casters could take another path on a volume of one region, a ray
// without samples, started far off in z, keeps them from it.
enum Regions { kOneRegion, kTwoRegions };

const std::vector<int> kEveryAxis = {0, 1, 2};
const std::vector<int> kXAndY = {0, 1};
const std::vector<int> kZ = {2};
const std::vector<Regions> kEither = {kOneRegion, kTwoRegions};

class StackRounding : public CasterTest {
 protected:
  bool trilinear() const { return caster().trilinear(); }
  double unit() const { return trilinear() ? 1.0 / 1048576 : 1.0 / 2097152; }
  double brink() const { return trilinear() ? 1.0 : 0.5; }
  double units(double n) const { return brink() + n * unit(); }  // n units beyond the brink

  // Voxels below coordinate 1 are 0, all others 1. A trilinear sample tells a unit below it by
  // values 0 and 200, of which it reads 199.
  int one() const { return trilinear() ? 200 : 1; }

  Stack stack(int axis, Regions regions) const {
    Stack stack(caster(), 9, 9, 8);
    stack.fill([&](int x, int y, int z) { return (axis == 0 ? x : axis == 1 ? y : z) >= 1 ? one() : 0; });
    if (regions == kTwoRegions) stack.regions({0, 4, 8}, {0, 4}, {1, 1});
    return stack;
  }

  bool reaches(Stack& stack, int axis, double start, double step, int k) {
    Point s = {2, 2, 2}, d = {0, 0, 0};
    s[static_cast<size_t>(axis)] = start;
    d[static_cast<size_t>(axis)] = step;
    Batch batch(caster().element_size());
    batch.add(s, d, k + 1).add({s[0], s[1], s[2] + 5}, d, 0);
    EXPECT_EQ(batch.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
    return batch.at(k, 0) == one();
  }
  bool reaches(int axis, Regions regions, double start, double step, int k) {
    Stack volume = stack(axis, regions);
    return reaches(volume, axis, start, step, k);
  }

  // Does sample k get there on every one of these axes and numbers of regions?
  void expect(bool there, const std::vector<int>& axes, const std::vector<Regions>& counts, double start,
              double step, int k) {
    for (int axis : axes) {
      for (Regions regions : counts) {
        EXPECT_EQ(reaches(axis, regions, start, step, k), there)
            << "axis " << axis << (regions == kOneRegion ? ", one region" : ", two regions");
      }
    }
  }
};

TEST_P(StackRounding, WholeUnitsStandAsTheyAre) {
  expect(true, kEveryAxis, kEither, units(0), 0, 3);
  expect(false, kEveryAxis, kEither, units(-1), 0, 3);
  expect(false, kEveryAxis, kEither, units(-2), unit(), 1);
  expect(true, kEveryAxis, kEither, units(-2), unit(), 2);
}

// Nearest casters cut starts off; trilinear ones round them.
TEST_P(StackRounding, Starts) {
  expect(trilinear(), kEveryAxis, kEither, units(-0.25), 0, 0);
  expect(trilinear(), kEveryAxis, kEither, units(-0.5), 0, 0);
  expect(false, kEveryAxis, kEither, units(-0.75), 0, 0);
}

// 0.3 is 629145.6 nearest units and 314572.8 trilinear ones. In x and y it is rounded by the
// trilinear casters, and of the nearest ones by the divergent 8-bit and 16-bit casters on one
// region; otherwise it is cut off. In z all nearest casters cut it off.
TEST_P(StackRounding, Steps) {
  const bool rounds_on_one = trilinear() || (!caster().parallel() && !caster().bit());
  const double rounded = trilinear() ? -314573 : -629146;
  expect(rounds_on_one, kXAndY, {kOneRegion}, units(rounded), 0.3, 1);
  expect(trilinear(), kXAndY, {kTwoRegions}, units(rounded), 0.3, 1);
  expect(trilinear(), kZ, kEither, units(rounded), 0.3, 1);
  expect(true, kEveryAxis, kEither, units(rounded + 1), 0.3, 1);
  expect(false, kEveryAxis, kEither, units(rounded - 1), 0.3, 1);
}

// -0.2 is -419430.4 nearest units and -209715.2 trilinear ones. Rounded, half is added and the
// rest cut toward zero: -419429 and -209714, the wrong way for who expects the nearest.
TEST_P(StackRounding, NegativeSteps) {
  const bool rounds_on_one = trilinear() || (!caster().parallel() && !caster().bit());
  const double rounded = trilinear() ? 209714 : 419429;
  expect(rounds_on_one, kXAndY, {kOneRegion}, units(rounded), -0.2, 1);
  expect(trilinear(), kXAndY, {kTwoRegions}, units(rounded), -0.2, 1);
  expect(trilinear(), kZ, kEither, units(rounded), -0.2, 1);
  expect(true, kEveryAxis, kEither, units(rounded + 1), -0.2, 1);
  expect(false, kEveryAxis, kEither, units(rounded - 1), -0.2, 1);
}

// So is a whole number of units: -2 becomes -1 where steps are rounded.
TEST_P(StackRounding, NegativeWholeSteps) {
  const bool rounds_on_one = trilinear() || (!caster().parallel() && !caster().bit());
  expect(rounds_on_one, kXAndY, {kOneRegion}, units(1), -2 * unit(), 1);
  expect(trilinear(), kXAndY, {kTwoRegions}, units(1), -2 * unit(), 1);
  expect(trilinear(), kZ, kEither, units(1), -2 * unit(), 1);
  expect(true, kEveryAxis, kEither, units(2), -2 * unit(), 1);
}

// Two slices a z unit, or half of one: positions and steps in slices are cut toward zero, and then
// they are stepped. Steps of 3 units are 1.5 and thus 1 unit in slices.
TEST_P(StackRounding, SlicePositionsAreSteppedNotComputedAnew) {
  Stack volume = stack(2, kOneRegion).regions({0, 16}, {0}, {0.5});
  const double start = 2 * units(-3);
  EXPECT_FALSE(reaches(volume, 2, start, 3 * unit(), 2));  // computed anew: 2 * -3 + 6 = 0
  EXPECT_TRUE(reaches(volume, 2, start, 3 * unit(), 3));
  Stack two = stack(2, kOneRegion).regions({0, 12, 16}, {0, 6}, {0.5, 0.5});
  EXPECT_FALSE(reaches(two, 2, start, 3 * unit(), 2));
  EXPECT_TRUE(reaches(two, 2, start, 3 * unit(), 3));
}

TEST_P(StackRounding, SliceStepsAreCutTowardZero) {
  // -3 units, where steps are rounded made from -3.5: -1.5 and thus -1 unit in slices.
  const double step = (trilinear() ? -3.5 : -3) * unit();
  for (auto bounds : {std::vector<double>{0, 16}, std::vector<double>{0, 8, 16}}) {
    Stack volume = stack(2, kOneRegion);
    if (bounds.size() == 2) volume.regions(bounds, {0}, {0.5});
    if (bounds.size() == 3) volume.regions(bounds, {0, 4}, {0.5, 0.5});
    EXPECT_TRUE(reaches(volume, 2, 2 * units(1), step, 1));
    EXPECT_FALSE(reaches(volume, 2, 2 * units(1), step, 2));
  }
}

TEST_P(StackRounding, SlicePositionsAreCutTowardZero) {
  Stack volume = stack(2, kOneRegion).regions({0, 16}, {0}, {0.5});
  EXPECT_TRUE(reaches(volume, 2, 2 * units(0) + unit(), 0, 0));
  EXPECT_FALSE(reaches(volume, 2, 2 * units(0) - unit(), 0, 0));
}

// Boundaries are rounded by divergent trilinear 8-bit and by both parallel trilinear casters.
// Here the first boundary lies 0.6 units above 0, which moves the stack by a unit or not at all;
// then 1.2 units below 0, where rounding gives 0 and cutting -1.
TEST_P(StackRounding, FirstBoundary) {
  const bool rounds = trilinear() && (caster().parallel() || caster().element_size() == 1);
  Stack above = stack(2, kOneRegion).regions({0.6 * unit(), 8}, {0}, {1});
  EXPECT_EQ(reaches(above, 2, units(0), 0, 0), !rounds);
  EXPECT_TRUE(reaches(above, 2, units(1), 0, 0));
  Stack below = stack(2, kOneRegion).regions({-1.2 * unit(), 8}, {0}, {1});
  EXPECT_EQ(reaches(below, 2, units(-1), 0, 0), !rounds);
  EXPECT_TRUE(reaches(below, 2, units(0), 0, 0));
}

// The same of the boundary between two regions, 0.6 units above z = 4. What lies above it is read
// from slice 6, which holds ones.
TEST_P(StackRounding, InnerBoundary) {
  const bool rounds = trilinear() && (caster().parallel() || caster().element_size() == 1);
  Stack volume(caster(), 9, 9, 8);
  volume.regions({0, 4 + 0.6 * unit(), 6}, {0, 6}, {1, 1}).fill([&](int, int, int s) {
    return s == 6 || s == 7 ? one() : 0;
  });
  EXPECT_EQ(reaches(volume, 2, 4 + unit(), 0.125, 0), !rounds);  // rising: above 4 or on 4 + a unit
  EXPECT_EQ(reaches(volume, 2, 4, -0.125, 0), !rounds);          // falling: on 4 or below 4 + a unit
  EXPECT_TRUE(reaches(volume, 2, 4 + 2 * unit(), 0.125, 0));
  EXPECT_FALSE(reaches(volume, 2, 4 - unit(), -0.125, 0));
}

INSTANTIATE_FOR_CASTERS(StackRounding, slice_stacks);

// The half voxel of the nearest casters is added before the start is cut off, which a start a
// quarter of a unit below 0 tells: half a voxel less a unit.
class StackNearestRounding : public StackRounding {};

TEST_P(StackNearestRounding, StartsGetTheirHalfBeforeTheyAreCut) {
  expect(false, kXAndY, kEither, -0.25 * unit(), 0.5, 1);
  expect(true, kXAndY, kEither, 0, 0.5, 1);
}

INSTANTIATE_FOR_CASTERS(StackNearestRounding, [](const Caster& c) { return !c.blocked() && !c.trilinear(); });

}  // namespace
}  // namespace zox_test
