// Slice stacks, casters that sort samples by slice: how a sample's z finds its region and slice.
#include "cases.h"
#include "small_batch.h"
#include "small_volumes.h"

namespace zox_test {
namespace {

using Ints = std::vector<int>;

// Slices of constant value, so that a sample names its slice. A second ray, without samples and far
// off in z, keeps parallel nearest casters from their one-region path.
class StackRegions : public CasterTest {
 protected:
  bool trilinear() const { return caster().trilinear(); }
  double unit() const { return trilinear() ? 1.0 / 1048576 : 1.0 / 2097152; }

  // Bits cannot name slices: then only `marked` is 1.
  Stack stack_of(int slices, int marked) const {
    Stack stack(caster(), 9, 9, slices);
    return stack.fill([&](int, int, int s) { return caster().bit() ? s == marked : 10 * s; });
  }

  Ints samples(Stack& stack, double z, double dz, int count) {
    Batch batch(caster().element_size());
    batch.add({2, 2, z}, {0, 0, dz}, count).add({2, 2, z + 1000}, {0, 0, 0}, 0);
    EXPECT_EQ(batch.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
    return batch.samples(0);
  }

  // Ten times the slice position of each sample, as the voxels give it.
  void expect(int slices, const std::vector<double>& bounds, const std::vector<int32_t>& first,
              const std::vector<double>& scale, double z, double dz, const Ints& tenths) {
    for (int marked = 0; marked <= (caster().bit() ? slices : 0); ++marked) {
      Stack stack = stack_of(slices, marked);
      stack.regions(bounds, first, scale);
      Ints expected = tenths;
      for (int& value : expected) {
        if (!trilinear()) value = (value + 5) / 10 * 10;
        if (caster().bit()) value = value == 10 * marked ? 1 : 0;
      }
      EXPECT_EQ(samples(stack, z, dz, static_cast<int>(tenths.size())), expected) << "marked " << marked;
    }
  }
};

TEST_P(StackRegions, OneRegionMapsZToSlices) {
  expect(8, {10, 14}, {0}, {2}, 10, 0.25, {0, 5, 10, 15, 20, 25});
  expect(8, {-3, 5}, {0}, {1}, -3, 1.5, {0, 15, 30, 45});
  expect(8, {0, 16}, {2}, {0.25}, 4, 4, {30, 40, 50});
}

// 0.7 * (7 - 2) is 3.5 slices, to the bit; 0.7 * 7 - 0.7 * 2 is less.
TEST_P(StackRegions, TheBoundaryIsTakenOffBeforeScaling) { expect(8, {2, 52}, {0}, {0.7}, 7, 0, {35}); }

// Every z is in range, but the distance from a boundary is not: it wraps in 32 bits, as every sum
// does. 1400 of 2048 units becomes -648 in nearest, 2800 of 4096 becomes -1296 in trilinear.
TEST_P(StackRegions, DistancesInARegionWrap) {
  const double wide = trilinear() ? 2 : 1;
  for (int marked : {75, 90, 101}) {
    Stack stack(caster(), 9, 9, 140);
    stack.fill([&](int, int, int s) { return caster().bit() ? s == marked : s; });
    stack.regions({-800 * wide, -500 * wide, 1000 * wide}, {100, 103}, {.004 / wide, .02 / wide});
    Batch batch(caster().element_size());
    for (double z : {900, 901}) batch.add({2, 2, z * wide}, {0, 0, -750 * wide}, 3);
    EXPECT_EQ(batch.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
    Ints expected = {90, 75, trilinear() ? 100 : 101};
    for (int& value : expected) value = caster().bit() ? value == marked : value;
    for (int r : {0, 1}) EXPECT_EQ(batch.samples(r), expected) << "ray " << r;
  }
}

// A z beyond the last number of fixed point wraps to the lowest: a rising ray then climbs no more. In
// the second region the sample would be in slice 22.
TEST_P(StackRegions, AZThatWrapsChangesNoRegion) {
  const double limit = trilinear() ? 2048 : 1024;
  expect(23, {limit - 124, limit - 24, limit - .1}, {0, 20}, {.1, .1}, limit - 34, 34.05, {90, 124});
}

// z = 15 lies in the second region, at slice 10 + 5 / 2.
TEST_P(StackRegions, EveryRegionHasItsScale) {
  expect(16, {0, 10, 20}, {0, 10}, {1, 0.5}, 15, 0, {125});
  expect(16, {0, 10, 20}, {0, 10}, {1, 0.5}, 6, 3, {60, 90, 110, 125, 140});
  expect(16, {0, 10, 20}, {0, 10}, {1, 0.5}, 19, -3.5, {145, 127, 110, 85, 50});
}

// Regions of slices in any order and any scale: rays switch at the first sample beyond a boundary.
TEST_P(StackRegions, RaysSwitchBeyondTheBoundary) {
  const std::vector<double> bounds = {0, 2, 4, 6};
  expect(16, bounds, {8, 4, 12}, {1, 1, 1}, 0, 0.5,
         {80, 85, 90, 95, 100, 45, 50, 55, 60, 125, 130, 135, 140});
  expect(16, bounds, {8, 4, 12}, {1, 1, 1}, 6, -0.5,
         {140, 135, 130, 125, 120, 55, 50, 45, 40, 95, 90, 85, 80});
}

TEST_P(StackRegions, OneStepMayCrossManyRegions) {
  const std::vector<double> bounds = {0, 1, 2, 3, 4, 5, 6};
  const std::vector<int32_t> first = {0, 10, 2, 8, 4, 6};
  const std::vector<double> scale = {1, 1, 1, 1, 1, 1};
  expect(12, bounds, first, scale, 0.5, 5, {5, 65});
  expect(12, bounds, first, scale, 5.5, -5, {65, 5});
  expect(12, bounds, first, scale, 0.5, 2, {5, 25, 45});
  expect(12, bounds, first, scale, 2.5, -2, {25, 5});
  expect(12, bounds, first, scale, 3.5, 0.25, {85, 87, 90, 42});
}

// On a boundary a rising ray stays in the lower region, and one that falls or keeps its z in the upper.
TEST_P(StackRegions, ARayOnABoundaryStaysWhereItComesFrom) {
  const std::vector<double> bounds = {0, 2, 4};
  expect(10, bounds, {0, 6}, {1, 1}, 2, 1, {20, 70});
  expect(10, bounds, {0, 6}, {1, 1}, 2, -1, {60, 10});
  expect(10, bounds, {0, 6}, {1, 1}, 2, 0, {60, 60});
  expect(10, bounds, {0, 6}, {1, 1}, 1, 1, {10, 20, 70});
  expect(10, bounds, {0, 6}, {1, 1}, 3, -1, {70, 60, 10});
}

// Two slices apart on either side of the boundary, a sample tells its region a unit off it.
TEST_P(StackRegions, AUnitOffTheBoundaryIsTheOtherRegion) {
  const std::vector<double> bounds = {0, 2, 4};
  const int high = caster().bit() ? 1 : 60;
  const auto sample = [&](double z, double dz) {
    Stack stack = stack_of(10, 6).regions(bounds, {0, 6}, {1, 1});
    return samples(stack, z, dz, 1)[0];
  };
  EXPECT_EQ(sample(2 + unit(), 1), high);
  EXPECT_NE(sample(2, 1), high);
  EXPECT_EQ(sample(2, -1), high);
  EXPECT_NE(sample(2 - unit(), -1), high);
}

// It is the step in fixed point that rises: one unit does, what becomes 0 does not.
TEST_P(StackRegions, ARayRisesByAUnitAtLeast) {
  const std::vector<double> bounds = {0, 2, 4};
  expect(10, bounds, {0, 6}, {1, 1}, 2, unit(), {20});
  expect(10, bounds, {0, 6}, {1, 1}, 2, 0.4 * unit(), {60});
  expect(10, bounds, {0, 6}, {1, 1}, 2, 0.9 * unit(), {trilinear() ? 20 : 60});
  expect(10, bounds, {0, 6}, {1, 1}, 2, -unit(), {60});
}

// A ray that keeps its z walks down from the last region to its own.
TEST_P(StackRegions, ALevelRayFindsItsRegion) {
  expect(12, {0, 2, 4, 6}, {8, 4, 0}, {1, 1, 1}, 1.5, 0, {95, 95, 95});
  expect(12, {0, 2, 4, 6}, {8, 4, 0}, {1, 1, 1}, 3.5, 0, {55, 55});
  expect(12, {0, 2, 4, 6}, {8, 4, 0}, {1, 1, 1}, 5.5, 0, {15});
}

// The walk ends at the first and the last region.
TEST_P(StackRegions, TheOuterRegionsReachBeyondTheirEnds) {
  expect(12, {0, 2, 4}, {2, 6}, {1, 1}, 3, 1, {70, 80, 90, 100});
  expect(12, {0, 2, 4}, {2, 6}, {1, 1}, 1, -1, {30, 20, 10, 0});
  expect(12, {0, 4}, {2}, {1}, 3, 1, {50, 60, 70, 80});
}

// A start below the last boundary can be rounded to a unit above it.
TEST_P(StackRegions, RoundingMayCarryASampleBeyondTheLastBoundary) {
  const double end = 4 + 0.9 * unit();
  expect(10, {0, 2, end}, {0, 6}, {1, 1}, end, 1, {80});
  expect(10, {0, 2, end}, {0, 6}, {1, 1}, end, unit(), {80, 80, 80, 80});
}

TEST_P(StackRegions, SamplesOutsideTheSlicesAreLeftUnwritten) {
  const auto expect_written = [&](Stack stack, double z, double dz, const std::vector<bool>& expected) {
    Batch batch(caster().element_size());
    batch.add({2, 2, z}, {0, 0, dz}, static_cast<int>(expected.size())).add({2, 2, z + 1000}, {0, 0, 0}, 0);
    EXPECT_EQ(batch.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
    for (size_t k = 0; k < expected.size(); ++k) {
      EXPECT_EQ(batch.written(static_cast<int>(k), 0), expected[k]) << "sample " << k;
    }
  };
  const Stack eight = stack_of(8, 1);
  const bool floors = trilinear();
  expect_written(Stack(eight), 6.75, 0.5, {true, true, floors, false, false});
  expect_written(Stack(eight).regions({0, 8}, {-3}, {1}), 1.75, 0.5, {false, false, !floors, true, true});
  expect_written(Stack(eight).regions({0, 8}, {4}, {1}), 3, 1, {true, false, false});
  expect_written(Stack(eight).pretend(3), 1.75, 0.5, {true, true, floors, false});
  expect_written(Stack(eight).pretend(0), 1, 1, {false, false, false});
  expect_written(Stack(eight).pretend(-1), 1, 1, {false, false, false});
  // Far off, on either side.
  expect_written(Stack(eight).regions({0, 500}, {0}, {1}), 1, 400, {true, false});
  expect_written(Stack(eight).regions({0, 8}, {1 << 30}, {1}), 1, 1, {false, false});
  expect_written(Stack(eight).regions({0, 8}, {-(1 << 30)}, {1}), 1, 1, {false, false});
  expect_written(Stack(eight).regions({0, 4, 8}, {2000, 0}, {1, 1}), 3.25, 1, {false, true});
  expect_written(Stack(eight).regions({0, 4, 8}, {0, -2000}, {1, 1}), 3.25, 1, {true, false});
}

// As high as the fixed point reaches, and back down into the stack.
TEST_P(StackRegions, RaysMayComeFromTheEndOfTheRange) {
  const double top = trilinear() ? 2046 : 1023;
  for (const auto& bounds : {std::vector<double>{0, top}, std::vector<double>{0, 4, top}}) {
    Stack stack = stack_of(8, 6);
    const bool one_region = bounds.size() == 2;
    stack.regions(bounds, one_region ? std::vector<int32_t>{0} : std::vector<int32_t>{0, 4},
                  std::vector<double>(bounds.size() - 1, 1.0));
    Batch batch(caster().element_size());
    batch.add({2, 2, top}, {0, 0, (6 - top) / 2}, 3).add({2, 2, 0}, {0, 0, 0}, 0);
    EXPECT_EQ(batch.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
    EXPECT_FALSE(batch.written(0, 0));
    EXPECT_FALSE(batch.written(1, 0));
    EXPECT_EQ(batch.at(2, 0), caster().bit() ? 1 : 60);
  }
}

// Below the stack a falling ray's slices wrap to high ones; those before are sampled all the same.
TEST_P(StackRegions, RaysMayFallOutOfTheRange) {
  Stack stack = stack_of(8, 3).regions({0, 4, 8}, {0, 4}, {1, 1});
  Batch batch(caster().element_size());
  batch.add({2, 2, 3}, {0, 0, trilinear() ? -1000.0 : -500.0}, 4).add({2, 2, 1000}, {0, 0, 0}, 0);
  EXPECT_EQ(batch.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
  EXPECT_EQ(batch.at(0, 0), caster().bit() ? 1 : 30);
  for (int k : {1, 2, 3}) EXPECT_FALSE(batch.written(k, 0)) << k;
}

// Far below the first region the distance from it wraps to a high slice, though z does not: a sample in the
// stack, on the same ray, is taken all the same.
TEST_P(StackRegions, DistancesBelowTheRegionsWrap) {
  const double wide = trilinear() ? 2 : 1, bottom = 600 * wide, apart = 400 * wide;
  Stack stack = stack_of(8, 3).regions({bottom, bottom + 4, bottom + 8}, {0, 4}, {1, 1});
  const auto expect_one = [&](double z, double dz, int inside) {
    Batch batch(caster().element_size());
    batch.add({2, 2, z}, {0, 0, dz}, 4);
    EXPECT_EQ(batch.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
    for (int k = 0; k < 4; ++k) {
      if (k == inside) EXPECT_EQ(batch.at(k, 0), caster().bit() ? 1 : 30);
      if (k != inside) EXPECT_FALSE(batch.written(k, 0)) << k;
    }
  };
  expect_one(bottom + 3, -apart, 0);
  expect_one(bottom + 3 - 3 * apart, apart, 3);
}

// In a region deeper than half the range distances from its lower end wrap, and slices below with them.
TEST_P(StackRegions, DistancesInADeepRegionWrap) {
  if (caster().fixed_tables()) return;  // as many slices are not allowed
  const double wide = trilinear() ? 2 : 1, top = 600 * wide;
  const int second = static_cast<int>(960 * wide);
  Stack stack(caster(), 4, 4, second + 8);
  stack.fill([&](int, int, int s) { return s < second ? 0 : 10 * (s - second); });
  stack.regions({-top, top, top + 8}, {0, second}, {.8, 1});
  Batch batch(caster().element_size());
  batch.add({2, 2, top + 5}, {0, 0, -150 * wide}, 4);
  EXPECT_EQ(batch.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
  EXPECT_EQ(batch.at(0, 0), 50);
  for (int k : {1, 2, 3}) EXPECT_FALSE(batch.written(k, 0)) << k;
}

// The half slice that rounds carries 1023.75 over the end of 32 bits to -1024, and 1030 on is slice 6.
TEST_P(StackRegions, TheHalfSliceWraps) {
  if (trilinear()) return;
  Stack stack = stack_of(8, 6).regions({0, 1024}, {1030}, {1});
  Batch batch(caster().element_size());
  batch.add({2, 2, 1023.75}, {0, 0, -20}, 2).add({2, 2, 0}, {0, 0, 0}, 0);
  EXPECT_EQ(batch.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
  EXPECT_EQ(batch.at(0, 0), caster().bit() ? 1 : 60);
  EXPECT_FALSE(batch.written(1, 0));
}

// Boundaries that go down again: a rising ray passes every one below it, a falling one every one above.
TEST_P(StackRegions, BoundariesMayDescend) {
  const std::vector<double> bounds = {0, 8, 4, 16};
  expect(16, bounds, {0, 9, 6}, {1, 1, 1}, 1, 4, {10, 50, 110, 150});
  expect(16, bounds, {0, 9, 6}, {1, 1, 1}, 13, -4, {150, 110, 70, 10});
}

// Steps of 2^30 units come back to the start after four: the samples between, far outside the stack,
// stay unwritten, and x has come round as well.
TEST_P(StackRegions, PositionsWrapIn32Bits) {
  for (bool one_region : {true, false}) {
    Stack stack(caster(), 3, 3, 8);
    stack.set(1, 1, 1, 1);
    if (!one_region) stack.regions({0, 4, 8}, {0, 4}, {1, 1});
    const double step = (1 << 30) * unit();
    Batch batch(caster().element_size());
    batch.add({1, 1, 1}, {step, step, step}, 5).add({1, 1, 1000}, {step, step, step}, 0);
    EXPECT_EQ(batch.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
    EXPECT_EQ(batch.at(0, 0), 1);
    for (int k : {1, 2, 3}) EXPECT_FALSE(batch.written(k, 0)) << "sample " << k;
    EXPECT_EQ(batch.at(4, 0), 1);
  }
}

// Tables of 512 entries have room for these; what is larger must come from elsewhere.
TEST_P(StackRegions, LargestFixedTablesAndBeyond) {
  const bool grows = !caster().fixed_tables();
  for (int slices : {512, 513}) {
    if (slices > 512 && !grows) continue;
    Stack stack(caster(), 3, 3, slices);
    stack.set(1, 1, slices - 1, 1);
    Batch batch(caster().element_size());
    batch.add({1, 1, slices - 1.0}, {0, 0, -1}, 3).add({1, 1, 0}, {0, 0, 0}, 0);
    EXPECT_EQ(batch.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
    EXPECT_EQ(batch.samples(0), (Ints{1, 0, 0}));
  }
  for (int regions : {511, 512, 600}) {
    if (regions > 511 && !grows) continue;
    Stack stack(caster(), 3, 3, 9);
    const int value = caster().bit() ? 1 : 100;
    stack.set(1, 1, 7, value);
    std::vector<double> bounds = {0};
    for (int j = 0; j < regions; ++j) bounds.push_back(j + 1);
    std::vector<int32_t> first(static_cast<size_t>(regions), 0);
    first.back() = 7;
    stack.regions(bounds, first, std::vector<double>(static_cast<size_t>(regions), 1.0));
    Batch batch(caster().element_size());
    batch.add({1, 1, regions - 1.25}, {0, 0, 0.25}, 3);
    EXPECT_EQ(batch.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
    // The last but one region, its end, and a quarter of a slice into the last one.
    EXPECT_EQ(batch.samples(0), (Ints{0, 0, trilinear() ? 75 : value}));
  }
}

TEST_P(StackRegions, AsManySamplesAsTheStackHoldsAndMore) {
  for (int count : {512, 513, 1300}) {
    Stack stack(caster(), 3, 3, 8);
    stack.set(1, 1, 3, 1);
    Batch batch(caster().element_size());
    batch.add({1, 1, 3}, {0, 0, 0}, count).add({1, 1, 5}, {0, 0, 0}, 2).add({1, 1, 3}, {0, 0, 0}, count - 1);
    EXPECT_EQ(batch.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
    EXPECT_EQ(batch.samples(0), Ints(static_cast<size_t>(count), 1));
    EXPECT_EQ(batch.samples(1), (Ints{0, 0}));
    EXPECT_EQ(batch.samples(2), Ints(static_cast<size_t>(count - 1), 1));
  }
}

INSTANTIATE_FOR_CASTERS(StackRegions, slice_stacks);

}  // namespace
}  // namespace zox_test
