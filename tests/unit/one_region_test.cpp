// Slice stacks, parallel nearest casters: when they take the one-region path, and its arithmetic.
#include <array>
#include <limits>

#include "cases.h"
#include "guarded_buffer.h"
#include "small_batch.h"
#include "small_volumes.h"

namespace zox_test {
namespace {

using Ints = std::vector<int>;

// The one-region path counts slices from 0, the others from regslice: with regslice 2 a ray at
// z = 1 reads slice 1 by the one and slice 3 by the others.
class OneRegionChoice : public CasterTest {
 protected:
  bool one_region(std::vector<double> bounds, const std::vector<double>& starts,
                  const std::vector<int32_t>& counts = {}) {
    Stack stack(caster(), 4, 4, 6);
    stack.set(1, 1, 1, 1).regions(std::move(bounds), {2}, {1});
    Batch batch(caster().element_size());
    for (size_t r = 0; r < starts.size(); ++r) {
      batch.add({1, 1, starts[r]}, {0, 0, 0}, counts.empty() ? (r == 0 ? 1 : 0) : counts[r]);
    }
    EXPECT_EQ(batch.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
    return batch.at(0, 0) == 1;
  }
};

TEST_P(OneRegionChoice, IsTakenByRaysThatStartAtOneZ) {
  EXPECT_TRUE(one_region({0, 10}, {1}));
  EXPECT_TRUE(one_region({0, 10}, {1, 1, 1}));
}

TEST_P(OneRegionChoice, IsTakenBelowAFifthOfTheDepthAndNotAtIt) {
  EXPECT_FALSE(one_region({0, 10}, {1, 3}));
  EXPECT_TRUE(one_region({0, 10}, {1, 3 - 1e-9}));
  EXPECT_FALSE(one_region({0, 10}, {1, 3 + 1e-9}));
  EXPECT_FALSE(one_region({0, 10}, {1, -1}));
  EXPECT_TRUE(one_region({0, 10}, {1, -1 + 1e-9}));
}

// 3 * 0.2 is 0.6000000000000001 and more than 1.6 - 1, which is 0.6000000000000001 too; 3 / 5 is 0.6.
// From z = 0 the distance is 0.6.
TEST_P(OneRegionChoice, TheDepthIsMultipliedNotDivided) {
  EXPECT_FALSE(one_region({0, 3}, {1, 1.6}));
  Stack stack(caster(), 4, 4, 6);
  stack.set(1, 1, 0, 1).regions({0, 3}, {2}, {1});
  Batch batch(caster().element_size());
  batch.add({1, 1, 0}, {0, 0, 0}, 1).add({1, 1, 0.6}, {0, 0, 0}, 0);
  EXPECT_EQ(batch.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
  EXPECT_EQ(batch.at(0, 0), 1);
}

// 1.5 to either side of ray 0 is 3 between the outermost, and still less than 2 from ray 0.
TEST_P(OneRegionChoice, DistancesAreFromRay0) {
  EXPECT_TRUE(one_region({0, 10}, {1, 2.5, -0.5}));
  EXPECT_FALSE(one_region({0, 10}, {1, 1, 3.5, 1}));
}

TEST_P(OneRegionChoice, RaysWithoutSamplesCount) {
  EXPECT_FALSE(one_region({0, 10}, {1, 5}, {1, 0}));
  EXPECT_TRUE(one_region({0, 10}, {1, 2}, {1, 0}));
}

TEST_P(OneRegionChoice, ARegionWithoutDepthIsNotTaken) {
  EXPECT_FALSE(one_region({1, 1}, {2}));
  EXPECT_FALSE(one_region({2, 1}, {3}));
}

TEST_P(OneRegionChoice, NotANumberIsNotTaken) {
  EXPECT_FALSE(one_region({0, std::numeric_limits<double>::quiet_NaN()}, {1}));
}

TEST_P(OneRegionChoice, TwoRegionsAreNeverOne) {
  Stack stack(caster(), 4, 4, 6);
  stack.set(1, 1, 3, 1).regions({0, 10, 20}, {2, 4}, {1, 1});
  Batch batch(caster().element_size());
  batch.add({1, 1, 1}, {0, 0, 0}, 1);
  EXPECT_EQ(batch.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
  EXPECT_EQ(batch.at(0, 0), 1);
}

bool parallel_nearest(const Caster& c) { return !c.blocked() && c.parallel() && !c.trilinear(); }

INSTANTIATE_FOR_CASTERS(OneRegionChoice, parallel_nearest);

// Is the coordinate of a sample at least `edge`? Voxels below it are 0, the others 1.
class OneRegionCount : public OperationsTest {};

class OneRegionPath : public CasterTest {
 protected:
  Stack stack(int axis, int edge) const {
    Stack stack(caster(), 9, 9, 9);
    stack.fill([&](int x, int y, int z) { return (axis == 0 ? x : axis == 1 ? y : z) >= edge ? 1 : 0; });
    return stack;
  }

  // Rays apart from one another along an axis only.
  Batch rays(int axis, const std::vector<double>& starts, double step, int count) const {
    Batch batch(caster().element_size());
    for (double start : starts) {
      Point s = {2, 2, 2}, d = {0, 0, 0};
      s[static_cast<size_t>(axis)] = start;
      d[static_cast<size_t>(axis)] = step;
      batch.add(s, d, count);
    }
    return batch;
  }

  void expect(int edge, double start, double step, const Ints& reached) {
    for (int axis = 0; axis < 3; ++axis) {
      Stack volume = stack(axis, edge);
      Batch batch = rays(axis, {start}, step, static_cast<int>(reached.size()));
      EXPECT_EQ(batch.run(cast(), volume.volume()), ZOX_STS_NO_ERROR);
      EXPECT_EQ(batch.samples(0), reached) << "axis " << axis;
    }
  }
};

TEST_P(OneRegionPath, RoundsHalfUp) {
  expect(3, 2.5, 0, {1, 1});
  expect(3, 2.4999999, 0, {0, 0});
  expect(3, 2.5 - kUnit21, 0, {0, 0});
}

// Half a unit a step is lost to casters that step in fixed point.
TEST_P(OneRegionPath, PositionsRunInDoubles) { expect(1, 0.5 - kUnit21, kUnit21 / 2, {0, 0, 1, 1}); }

// 0.4 + 0.7 + 0.7 + 0.7 is 2.5 where 0.4 + 3 * 0.7 is less; six times 0.2 on 0.3 is less than 1.5.
TEST_P(OneRegionPath, PositionsAreAccumulated) {
  expect(3, 0.4, 0.7, {0, 0, 0, 1});
  expect(2, 0.3, 0.2, {0, 0, 0, 0, 0, 0, 0, 1});
}

// 0.3 * 2^21 is 629145.6, and a start that lacks 629146 units is short by the rest.
TEST_P(OneRegionPath, StepsAreNotRounded) {
  expect(1, 0.5 - 629146 * kUnit21, 0.3, {0, 0});
  expect(1, 0.5 - 629145 * kUnit21, 0.3, {0, 1});
}

// A negative offset of half a unit more than a quarter voxel is cut toward zero, and only then the
// half voxel is added: -524288.5 becomes -524288, so that 0.75 and the offset round to voxel 1 though
// the start is less than 0.5.
TEST_P(OneRegionPath, OffsetsAreCutBeforeTheirHalfIsAdded) {
  for (int axis = 0; axis < 3; ++axis) {
    Stack volume = stack(axis, 1);
    Batch batch = rays(axis, {0.75, 0.5 - kUnit21 / 2, 0.5 - kUnit21}, 0, 1);
    EXPECT_EQ(batch.run(cast(), volume.volume()), ZOX_STS_NO_ERROR);
    EXPECT_EQ(batch.at(0, 1), 1) << "axis " << axis;
    EXPECT_EQ(batch.at(0, 2), 0) << "axis " << axis;
  }
}

// 0.2 * (2.8 - 0.3) is half a slice; 0.2 * 2.8 - 0.2 * 0.3 would be less.
TEST_P(OneRegionPath, TheBoundaryIsTakenOffBeforeScaling) {
  Stack volume = stack(2, 1).regions({0.3, 20}, {0}, {0.2});
  Batch batch = rays(2, {2.8}, 0, 1);
  EXPECT_EQ(batch.run(cast(), volume.volume()), ZOX_STS_NO_ERROR);
  EXPECT_EQ(batch.at(0, 0), 1);
}

// Scaled by 0.7, a start at 0.2 and four steps of 1.2 add up to 3.4999999999999996 slices; scaled
// after they are added up, or multiplied instead of added, they are 3.5.
TEST_P(OneRegionPath, SliceStepsAreScaledOnce) {
  Stack volume = stack(2, 4).regions({0, 12}, {0}, {0.7});
  Batch batch = rays(2, {0.2}, 1.2, 6);
  EXPECT_EQ(batch.run(cast(), volume.volume()), ZOX_STS_NO_ERROR);
  EXPECT_EQ(batch.samples(0), (Ints{0, 0, 0, 0, 0, 1}));
}

TEST_P(OneRegionPath, OffsetsInZAreScaled) {
  Stack volume = stack(2, 2).regions({0, 20}, {0}, {0.5});
  Batch batch = rays(2, {0, 3, 2.9}, 0, 1);
  EXPECT_EQ(batch.run(cast(), volume.volume()), ZOX_STS_NO_ERROR);
  EXPECT_EQ(batch.at(0, 0), 0);
  EXPECT_EQ(batch.at(0, 1), 1);  // 1.5 slices
  EXPECT_EQ(batch.at(0, 2), 0);
}

// 0.7 * (7 - 2) is 3.5 slices; 0.7 * 7 - 0.7 * 2 would be less.
TEST_P(OneRegionPath, OffsetsInZAreTakenBeforeScaling) {
  Stack volume = stack(2, 4).regions({2, 52}, {0}, {0.7});
  Batch batch = rays(2, {2, 7}, 0, 1);
  EXPECT_EQ(batch.run(cast(), volume.volume()), ZOX_STS_NO_ERROR);
  EXPECT_EQ(batch.at(0, 0), 0);
  EXPECT_EQ(batch.at(0, 1), 1);
}

TEST_P(OneRegionPath, GoesOnBeyondItsRegion) {
  Stack volume = stack(2, 6).regions({0, 4}, {0}, {1});
  Batch batch = rays(2, {2}, 2, 4);
  EXPECT_EQ(batch.run(cast(), volume.volume()), ZOX_STS_NO_ERROR);
  EXPECT_EQ(batch.samples(0), (Ints{0, 0, 1, 1}));
}

TEST_P(OneRegionPath, DoesNotAskForTheNumberOfSlices) {
  for (int32_t nslices : {0, 1, -1}) {
    Stack volume = stack(2, 3).pretend(nslices);
    Batch batch = rays(2, {2}, 1, 3);
    EXPECT_EQ(batch.run(cast(), volume.volume()), ZOX_STS_NO_ERROR);
    EXPECT_EQ(batch.samples(0), (Ints{0, 1, 1}));
  }
}

// Column -1 is the byte (or the two) before the row, and for bits the first bit of that byte: the
// last of the row before.
TEST_P(OneRegionPath, ColumnsAreSigned) {
  Stack volume(caster(), 9, 9, 9);
  const int last = caster().element_size() * 9 - caster().element_size();
  volume.set_byte(last, 1, 2, caster().bit() ? 0x80 : 1);
  Batch batch = rays(0, {-0.6, -0.4}, 0, 1);
  EXPECT_EQ(batch.run(cast(), volume.volume()), ZOX_STS_NO_ERROR);
  EXPECT_EQ(batch.at(0, 0), 1);
  EXPECT_EQ(batch.at(0, 1), 0);
}

TEST_P(OneRegionPath, RowsAreSigned) {
  Stack volume(caster(), 9, 9, 9);
  volume.set(2, 7, 2, 1).row_before_first(7);
  Batch batch = rays(1, {-0.6, -0.4}, 0, 1);
  EXPECT_EQ(batch.run(cast(), volume.volume()), ZOX_STS_NO_ERROR);
  EXPECT_EQ(batch.at(0, 0), 1);
  EXPECT_EQ(batch.at(0, 1), 0);
}

INSTANTIATE_FOR_CASTERS(OneRegionPath, parallel_nearest);

// More samples than ray and plane together could number in 32 bits. The planes are the same few over
// and over; what the last samples wrote stands in them.
TEST_P(OneRegionCount, HasNoLimit) {
  constexpr int32_t kCount = (1 << 25) + 4;
  const RepeatedPages table(kCount * sizeof(void*));
  constexpr size_t kPlanes = RepeatedPages::period<void*>();
  std::vector<std::array<uint8_t, 2>> planes(kPlanes);
  for (size_t k = 0; k < kPlanes; ++k) table.as<void*>()[k] = planes[k].data();
  Stack stack(*casters_where(parallel_nearest)[0], 10, 2, 2);
  stack.fill([](int x, int, int) { return x; });
  const double start[3] = {0.5, 0, 0}, step[3] = {0x1p-22, 0, 0};  // voxel 9 after 2^25 samples
  const double* starts[] = {start, start};
  const double* steps[] = {step, step};
  for (int32_t second : {3, kCount - 1}) {
    const int32_t counts[] = {kCount, second};
    const zox_Rays rays = {table.as<void*>(), 2, starts, steps, counts};
    EXPECT_EQ(operations().general_parallel_nearest_8u(&stack.volume(), &rays), ZOX_STS_NO_ERROR);
    EXPECT_EQ(planes[3][0], 9);
    EXPECT_EQ(planes[4][0], 8);
    EXPECT_EQ(planes[2][1], second == 3 ? 1 : 9);
  }
}

INSTANTIATE_FOR_OPERATIONS(OneRegionCount);

}  // namespace
}  // namespace zox_test
