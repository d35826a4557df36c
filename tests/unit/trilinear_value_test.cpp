// What a trilinear sample is worth, given where it lies: the corner weights that all casters share,
// and the three formulas, which differ in precision and in rounding.
#include "cases.h"
#include "small_batch.h"
#include "small_volumes.h"

namespace zox_test {
namespace {

struct VoxelValue {
  int x, y, z, value;
};

class TrilinearValue : public CasterTest {
 protected:
  // One sample at a position, voxels not given being 0.
  int sample(Point at, std::initializer_list<VoxelValue> voxels) {
    Cube cube(caster());
    for (const VoxelValue& v : voxels) cube.set(v.x, v.y, v.z, v.value);
    Batch batch(caster().element_size());
    batch.add(at, {0, 0, 0}, 1);
    EXPECT_EQ(batch.run(cast(), cube.volume()), ZOX_STS_NO_ERROR);
    return batch.at(0, 0);
  }

  // The same along one axis: two neighbours with the fraction between them.
  int between(size_t axis, int first, int second, double fraction) {
    Point at = {2, 2, 2};
    at[axis] += fraction;
    return sample(at, {{2, 2, 2, first}, {2 + (axis == 0), 2 + (axis == 1), 2 + (axis == 2), second}});
  }
};

TEST_P(TrilinearValue, OnAVoxelIsTheVoxel) {
  EXPECT_EQ(sample({3, 4, 5}, {{3, 4, 5, 123}, {4, 4, 5, 255}, {3, 5, 5, 255}, {3, 4, 6, 255}}), 123);
  EXPECT_EQ(sample({0, 0, 0}, {{0, 0, 0, 123}}), 123);
}

// Fractions 1/4, 1/8 and 1/2: every weight times 128 is a whole number.
TEST_P(TrilinearValue, EveryCornerHasItsWeight) {
  const Point at = {2.25, 3.125, 4.5};
  EXPECT_EQ(sample(at, {{2, 3, 4, 128}}), 42);  // 3/4 * 7/8 * 1/2 * 128
  EXPECT_EQ(sample(at, {{3, 3, 4, 128}}), 14);
  EXPECT_EQ(sample(at, {{2, 4, 4, 128}}), 6);
  EXPECT_EQ(sample(at, {{3, 4, 4, 128}}), 2);
  EXPECT_EQ(sample(at, {{2, 3, 5, 128}}), 42);
  EXPECT_EQ(sample(at, {{3, 3, 5, 128}}), 14);
  EXPECT_EQ(sample(at, {{2, 4, 5, 128}}), 6);
  EXPECT_EQ(sample(at, {{3, 4, 5, 128}}), 2);
  EXPECT_EQ(sample({2.5, 3.5, 4.75}, {{2, 3, 4, 128}}), 8);
  EXPECT_EQ(sample({2.5, 3.5, 4.75}, {{2, 3, 5, 128}}), 24);
}

TEST_P(TrilinearValue, IsNeverRoundedUp) {
  for (int axis = 0; axis < 3; ++axis) {
    EXPECT_EQ(between(axis, 10, 11, 0.5), 10);
    EXPECT_EQ(between(axis, 0, 1, 0.999), 0);
    EXPECT_EQ(between(axis, 1, 0, 0.001), 0);
    EXPECT_EQ(between(axis, 0, 255, 0.5), 127);
  }
  EXPECT_EQ(between(0, 0, 255, 1 - kUnit20), 254);
}

TEST_P(TrilinearValue, HalfwayBetweenEqualsIsExact) {
  for (int axis = 0; axis < 3; ++axis) EXPECT_EQ(between(axis, 255, 255, 0.5), 255);
}

INSTANTIATE_FOR_CASTERS(TrilinearValue, [](const Caster& c) { return c.trilinear(); });

// Signed voxels: truncation toward zero, in the blocked formula as in that of slice stacks.
class SignedTrilinearValue : public TrilinearValue {};

TEST_P(SignedTrilinearValue, IsTruncatedTowardZero) {
  for (int axis = 0; axis < 3; ++axis) {
    EXPECT_EQ(between(axis, -10, -3, 0.5), -6);  // -6.5
    EXPECT_EQ(between(axis, -3, -4, 0.5), -3);   // -3.5
    EXPECT_EQ(between(axis, -2, -3, 0.7), -2);   // -2.7
    EXPECT_EQ(between(axis, -1, 0, 0.25), 0);    // -0.75
    EXPECT_EQ(between(axis, -32768, 32767, 0.5), 0);
    EXPECT_EQ(between(axis, -32768, -32768, 0.5), -32768);
    EXPECT_EQ(between(axis, 32767, 32767, 0.5), 32767);
  }
}

// 33 units of 32767 are 1.03 and 32 are 0.99997, on every axis.
TEST_P(SignedTrilinearValue, UsesAll20BitsOfEveryFraction) {
  for (int axis = 0; axis < 3; ++axis) {
    EXPECT_EQ(between(axis, 0, 32767, 33 * kUnit20), 1);
    EXPECT_EQ(between(axis, 0, 32767, 32 * kUnit20), 0);
  }
}

INSTANTIATE_FOR_CASTERS(SignedTrilinearValue,
                        [](const Caster& c) { return c.trilinear() && c.element_size() == 2; });

bool integer_formula(const Caster& c) {
  return c.trilinear() && c.element_size() == 1 && (!c.blocked() || c.parallel());
}

// 20 bits of x, 10 of y and z, differences without their low 10 bits, everything floored.
class IntegerTrilinearValue : public TrilinearValue {};

// Along x the row is a unit below 1. The row (or slice) beside it is 255, so that 1/1024 of the way
// adds a quarter, and all that is less adds nothing.
TEST_P(IntegerTrilinearValue, YAndZResolveA1024th) {
  const auto row = {VoxelValue{3, 2, 2, 1}, VoxelValue{2, 3, 2, 255}, VoxelValue{3, 3, 2, 255}};
  EXPECT_EQ(sample({3 - kUnit20, 2 + 1024 * kUnit20, 2}, row), 1);
  EXPECT_EQ(sample({3 - kUnit20, 2 + 1023 * kUnit20, 2}, row), 0);
  const auto slice = {VoxelValue{3, 2, 2, 1}, VoxelValue{2, 2, 3, 255}, VoxelValue{3, 2, 3, 255}};
  EXPECT_EQ(sample({3 - kUnit20, 2, 2 + 1024 * kUnit20}, slice), 1);
  EXPECT_EQ(sample({3 - kUnit20, 2, 2 + 1023 * kUnit20}, slice), 0);
}

// x resolves the last unit: 255 * 4112 units are 1048560, 255 * 4113 are 1048815 and thus 1.
TEST_P(IntegerTrilinearValue, XResolvesAUnit) {
  EXPECT_EQ(between(0, 0, 255, 4112 * kUnit20), 0);
  EXPECT_EQ(between(0, 0, 255, 4113 * kUnit20), 1);
}

// Row 0 stands at 1 unit, row 1 at 0: ((0 - 1) >> 10) * 2 + 1 = -1, and -1 >> 20 is -1, the byte
// 255. Weighed before it is shifted, the difference would leave 1 - 1 = 0.
TEST_P(IntegerTrilinearValue, UndershootsIntoA255) {
  const auto both_slices = {VoxelValue{3, 2, 2, 1}, VoxelValue{3, 2, 3, 1}};
  EXPECT_EQ(sample({2 + kUnit20, 2 + 2048 * kUnit20, 2}, both_slices), 255);
  EXPECT_EQ(sample({2 + kUnit20, 2 + 1024 * kUnit20, 2}, both_slices), 0);
  // Along z the same.
  EXPECT_EQ(sample({2 + kUnit20, 2, 2 + 2048 * kUnit20}, {{3, 2, 2, 1}}), 255);
  EXPECT_EQ(sample({2 + kUnit20, 2, 2 + 1024 * kUnit20}, {{3, 2, 2, 1}}), 0);
}

// Between slices at 20 and 10 plus a hair each: the shift floors the difference, not each slice.
TEST_P(IntegerTrilinearValue, FallingDifferencesAreFloored) {
  // 10 * 2^20 - (20 * 2^20 + 1) = -10485761, >> 10 is -10241, * 512 is -5243392, and with the first
  // slice 15728129, 511 units short of 15 * 2^20.
  EXPECT_EQ(sample({2 + kUnit20, 2, 2.5}, {{2, 2, 2, 20}, {3, 2, 2, 21}, {2, 2, 3, 10}, {3, 2, 3, 10}}), 14);
  EXPECT_EQ(sample({2, 2, 2.5}, {{2, 2, 2, 20}, {3, 2, 2, 21}, {2, 2, 3, 10}, {3, 2, 3, 10}}), 15);
}

INSTANTIATE_FOR_CASTERS(IntegerTrilinearValue, integer_formula);

// Blocked casters in doubles: eight terms, added from left to right.
class TermSumValue : public TrilinearValue {
 protected:
  // A sample in a cell of 255s. A second ray makes a parallel caster go ray by ray or sample by sample.
  int in_constant(Point at, double apart) {
    Cube cube(caster());
    for (int i = 0; i < 512; ++i) cube.set(i % 8, i / 8 % 8, i / 64, 255);
    Batch batch(caster().element_size());
    batch.add(at, {0, 0, 0.125}, 1).add({at[0], at[1], at[2] + apart}, {0, 0, 0.125}, 1);
    EXPECT_EQ(batch.run(cast(), cube.volume()), ZOX_STS_NO_ERROR);
    return batch.at(0, 0);
  }
};

// At the first three places the terms in their order add up to 254.99999999999997 or ...94. Any two
// neighbouring terms exchanged, the terms in the order of memory or added in pairs, or a fused
// product and sum give 255 at one of these at least.
TEST_P(TermSumValue, OfAConstantVolumeCanFallShort) {
  for (double apart : {0.0, 4.0}) {
    EXPECT_EQ(in_constant({0.4, 0.6, 0.6}, apart), 254);
    EXPECT_EQ(in_constant({0.2, 0.7, 0.6}, apart), 254);
    EXPECT_EQ(in_constant({0.1, 0.1, 0.7}, apart), 254);
    EXPECT_EQ(in_constant({0.5, 0.5, 0.5}, apart), 255);
  }
}

// With these, the factors of any single term multiplied in another order change a sample.
TEST_P(TermSumValue, DependsOnTheOrderOfEveryProduct) {
  for (double apart : {0.0, 4.0}) {
    EXPECT_EQ(in_constant({0.35, 0.4, 0.6}, apart), 255);
    EXPECT_EQ(in_constant({0.45, 0.95, 0.7}, apart), 254);
    EXPECT_EQ(in_constant({0.65, 0.3, 0.75}, apart), 254);
    EXPECT_EQ(in_constant({0.3, 0.3, 0.7}, apart), 255);
  }
}

INSTANTIATE_FOR_CASTERS(TermSumValue, [](const Caster& c) {
  return c.blocked() && c.trilinear() && (!c.parallel() || c.element_size() == 2);
});

// Slice stacks in doubles: (to - from) * fraction + from, along x, then y, then z. The places are
// such that the exact value lies within a few 10^-12 of a whole number.
class StackedDoublesValue : public TrilinearValue {
 protected:
  // Fractions in units. One of slices 2 and 3 has a voxel for each corner, the other is even.
  int sample_with(int uneven, Point units, int even, int v00, int v10, int v01, int v11) {
    const int other = 5 - uneven;
    return sample({2 + units[0] * kUnit20, 2 + units[1] * kUnit20, 2 + units[2] * kUnit20},
                  {{2, 2, other, even},
                   {3, 2, other, even},
                   {2, 3, other, even},
                   {3, 3, other, even},
                   {2, 2, uneven, v00},
                   {3, 2, uneven, v10},
                   {2, 3, uneven, v01},
                   {3, 3, uneven, v11}});
  }
};

// Exactly 10354 - 1.3e-12. from * (1 - fraction) + to * fraction would come to 10354.
TEST_P(StackedDoublesValue, WeighsTheDifference) {
  EXPECT_EQ(sample_with(3, {769173, 720940, 618473}, 13600, 13600, 13600, 13600, 2688), 10353);
}

// In doubles the same steps with y before x give the other neighbour. In the upper slice: exactly 10837
// - 2.9e-13, for which they give 10837; -8054 + 2.2e-13, -8054; and 3680 - 3.6e-12, which is 3680 by the
// steps in order and would be 3679. In the lower: 24430 - 2.6e-12, 24430; and 9077 - 9.2e-13, 9077.
TEST_P(StackedDoublesValue, GoesAlongXBeforeY) {
  EXPECT_EQ(sample_with(3, {103533, 635922, 578999}, 8668, -4290, -17180, 27081, -280), 10836);
  EXPECT_EQ(sample_with(3, {219959, 940129, 645601}, -11681, 4540, 15435, -3863, -19987), -8053);
  EXPECT_EQ(sample_with(3, {13673, 1040631, 793754}, -21037, -26056, 7245, 11740, 23956), 3680);
  EXPECT_EQ(sample_with(2, {41817, 730871, 976899}, 26244, 17262, 32054, -8513, -187), 24429);
  EXPECT_EQ(sample_with(2, {925715, 644814, 555627}, 23360, 14755, 7621, 27804, -22623), 9076);
}

INSTANTIATE_FOR_CASTERS(StackedDoublesValue, [](const Caster& c) {
  return !c.blocked() && c.trilinear() && c.element_size() == 2;
});

}  // namespace
}  // namespace zox_test
