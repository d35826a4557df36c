// Samples outside a slice stack, by every rule that places them.
#include "violations.h"

namespace checker_test {
namespace {

const std::string kGeneral = "zox_Volume_RayCast_General_";

TEST(Stack, ColumnsAndRowsBelowZero) {
  StackScene s(2);
  s.starts[1][0] = -0.75;
  expect_sentence(kGeneral +
                      "Divergent_Nearest_8U: ray 1, sample 0: it reads columns -1 to -1, but a row has "
                      "columns 0 to 65535",
                  [&] { zox_Volume_RayCast_General_Divergent_Nearest_8U(&s.volume, &s.rays); });
  s.starts[1] = {3, -0.25, 1};
  expect_sentence(kGeneral +
                      "Parallel_Trilinear_16S: ray 1, sample 0: it reads rows -1 to 0, but a slice has "
                      "rows 0 to 2147483646",
                  [&] { zox_Volume_RayCast_General_Parallel_Trilinear_16S(&s.volume, &s.rays); });
}

TEST(Stack, RegisteredColumnsAndRows) {
  StackScene s(2);
  zox_check_stack(s.volume.slices, StackScene::kColumns, StackScene::kRows);
  s.starts[0] = {14, 10, 1};
  s.steps[0] = {0, 0, 1};
  EXPECT_EQ(said([&] { zox_Volume_RayCast_General_Divergent_Trilinear_8U(&s.volume, &s.rays); }), "");
  s.starts[0] = {15, 10, 1};
  expect_sentence(kGeneral +
                      "Divergent_Trilinear_8U: ray 0, sample 0: it reads columns 15 to 16, but a row "
                      "has columns 0 to 15",
                  [&] { zox_Volume_RayCast_General_Divergent_Trilinear_8U(&s.volume, &s.rays); });
  s.starts[0] = {15, 11.5, 1};
  expect_sentence(kGeneral +
                      "Divergent_Nearest_Bit_8U: ray 0, sample 0: it reads rows 12 to 12, but a slice "
                      "has rows 0 to 11",
                  [&] { zox_Volume_RayCast_General_Divergent_Nearest_Bit_8U(&s.volume, &s.rays); });
  zox_check_forget(s.volume.slices);
}

TEST(Stack, OneRegionPathChecksRegisteredRowsToo) {
  StackScene s(1);
  zox_check_stack(s.volume.slices, StackScene::kColumns, StackScene::kRows);
  s.starts[2][1] = 11.4;  // its second sample is at 11.65
  expect_sentence(kGeneral +
                      "Parallel_Nearest_8U: ray 2, sample 1: it reads rows 12 to 12, but a slice has "
                      "rows 0 to 11",
                  [&] { zox_Volume_RayCast_General_Parallel_Nearest_8U(&s.volume, &s.rays); });
  zox_check_forget(s.volume.slices);
}

TEST(Stack, DepthOutsideTheRegions) {
  StackScene two(2);
  two.starts[2][2] = 11;  // then 12, which is the last boundary, and 13
  two.volume.nslices = 9;
  two.counts[2] = 2;
  EXPECT_EQ(said([&] { zox_Volume_RayCast_General_Divergent_Nearest_8U(&two.volume, &two.rays); }), "");
  two.counts[2] = 3;
  expect_sentence(kGeneral +
                      "Divergent_Nearest_8U: ray 2, sample 2: z = 13 lies outside the volume's regions, "
                      "0 to 12",
                  [&] { zox_Volume_RayCast_General_Divergent_Nearest_8U(&two.volume, &two.rays); });
  StackScene one(1);
  one.starts[0][2] = one.starts[1][2] = one.starts[2][2] = -0.25;
  expect_sentence(kGeneral +
                      "Parallel_Nearest_8U: ray 0, sample 0: z = -0.25 lies outside the volume's "
                      "regions, 0 to 8",
                  [&] { zox_Volume_RayCast_General_Parallel_Nearest_8U(&one.volume, &one.rays); });
}

TEST(Stack, AUnitPastTheLastBoundaryIsRounding) {
  StackScene s(2);
  // Both lie less than one unit above 12. The start is rounded to a whole unit, the boundary is
  // truncated to none, so in fixed point the sample has passed it.
  s.regbounds[2] = 12 + 0.75 / 1048576;
  s.starts[0] = {3, 4, 12 + 0.7 / 1048576};
  s.volume.nslices = 9;
  s.slices.push_back(s.slices[0]);
  s.volume.slices = s.slices.data();
  s.counts[0] = 1;
  EXPECT_EQ(said([&] { zox_Volume_RayCast_General_Divergent_Trilinear_16S(&s.volume, &s.rays); }), "");
}

TEST(Stack, SliceNumbers) {
  StackScene s(2);
  s.regslice[1] = 7;  // z = 7 is slice position 1.5 of region 1, slice 8 in trilinear sampling
  s.starts[0][2] = 4.5;
  s.counts[0] = 3;
  expect_sentence(kGeneral +
                      "Divergent_Trilinear_8U: ray 0, sample 2: it falls into slice 8, but the stack has "
                      "slices 0 to 7",
                  [&] { zox_Volume_RayCast_General_Divergent_Trilinear_8U(&s.volume, &s.rays); });
  s.regslice[1] = -1;  // z = 4.5 rounds to the region's first slice
  expect_sentence(kGeneral +
                      "Parallel_Nearest_Bit_8U: ray 0, sample 0: it falls into slice -1, but the stack "
                      "has slices 0 to 7",
                  [&] { zox_Volume_RayCast_General_Parallel_Nearest_Bit_8U(&s.volume, &s.rays); });
}

TEST(Stack, NullSlices) {
  StackScene s(1);
  s.slices[5] = nullptr;
  // Ray 0 ends at z = 4: trilinear sampling reads slices 4 and 5, nearest sampling only 4.
  EXPECT_EQ(said([&] { zox_Volume_RayCast_General_Divergent_Nearest_8U(&s.volume, &s.rays); }), "");
  expect_sentence(kGeneral + "Divergent_Trilinear_8U: ray 0, sample 3: it reads slices[5], which is null",
                  [&] { zox_Volume_RayCast_General_Divergent_Trilinear_8U(&s.volume, &s.rays); });
  s.slices[2] = nullptr;
  expect_sentence(kGeneral + "Parallel_Nearest_16S: ray 0, sample 1: it reads slices[2], which is null",
                  [&] { zox_Volume_RayCast_General_Parallel_Nearest_16S(&s.volume, &s.rays); });
}

TEST(Stack, RowOffsetsInThirtyTwoBits) {
  StackScene s(1);
  s.rowoffs[4] = INT32_MAX - 2;
  expect_sentence(kGeneral +
                      "Divergent_Nearest_8U: ray 0, sample 0: rowoffs[4] is 2147483645, so that column "
                      "3 lies beyond 32 bits",
                  [&] { zox_Volume_RayCast_General_Divergent_Nearest_8U(&s.volume, &s.rays); });
}

TEST(Stack, Alignment) {
  StackScene s(1);
  s.rowoffs[4] += 1;
  expect_sentence(kGeneral +
                      "Divergent_Nearest_16S: ray 0, sample 0: row 4 of slice 1 is not aligned to 16-bit "
                      "voxels",
                  [&] { zox_Volume_RayCast_General_Divergent_Nearest_16S(&s.volume, &s.rays); });
}

TEST(Stack, FixedPointRange) {
  StackScene s(2);
  s.starts[0][0] = 1023.5;  // the half of rounding makes it 1024
  expect_sentence(kGeneral +
                      "Divergent_Nearest_8U: ray 0, sample 0: its fixed-point x is 1024, outside -1024 "
                      "to 1024",
                  [&] { zox_Volume_RayCast_General_Divergent_Nearest_8U(&s.volume, &s.rays); });
  s.starts[0][0] = 2047.5;
  expect_sentence(kGeneral +
                      "Parallel_Trilinear_8U: ray 0, sample 1: its fixed-point x is 2048, outside -2048 "
                      "to 2048",
                  [&] { zox_Volume_RayCast_General_Parallel_Trilinear_8U(&s.volume, &s.rays); });
}

// Both samples are in range, but the step between them is not, which only the second takes.
TEST(Stack, FixedPointRangeOfTheStep) {
  StackScene s(2);
  s.regbounds = {-700, 0, 800};
  s.regslice = {0, 1};
  s.regscale = {0.001, 0.001};
  s.starts[1][2] = -699;
  s.steps[1][2] = 1490;
  s.counts = {0, 1, 0};
  const auto call = [&] { zox_Volume_RayCast_General_Divergent_Nearest_8U(&s.volume, &s.rays); };
  EXPECT_EQ(said(call), "");
  s.counts[1] = 2;
  expect_sentence(kGeneral +
                      "Divergent_Nearest_8U: ray 1, sample 1: the step in z is 1490, outside the fixed "
                      "point's range of 1024",
                  call);
  EXPECT_EQ(said([&] { zox_Volume_RayCast_General_Divergent_Trilinear_8U(&s.volume, &s.rays); }), "");
}

TEST(Stack, FixedPointRangeOfTheSlicePosition) {
  StackScene s(1);
  s.regscale[0] = 600;
  s.volume.nslices = 5000;
  s.starts[0] = {3, 4, 0.5};  // slice 300, then 900, then 1500
  s.steps[0] = {0, 0, 1};
  s.slices.assign(5001, s.slices[0]);
  s.volume.slices = s.slices.data();
  expect_sentence(kGeneral +
                      "Divergent_Nearest_8U: ray 0, sample 2: its fixed-point slice position is 1500.5, "
                      "outside -1024 to 1024",
                  [&] { zox_Volume_RayCast_General_Divergent_Nearest_8U(&s.volume, &s.rays); });
}

TEST(Stack, FixedPointRangeOfTheBoundaries) {
  StackScene s(2);
  s.regbounds[2] = 1024;
  expect_sentence(
      kGeneral + "Divergent_Nearest_8U: regbounds[2] = 1024 leaves the fixed point's range of 1024",
      [&] { zox_Volume_RayCast_General_Divergent_Nearest_8U(&s.volume, &s.rays); });
}

TEST(Stack, OneRegionPathSharesTheRangeOfRayZero) {
  StackScene s(1);
  s.starts[0] = {1022, 4, 1};
  s.counts[0] = 0;  // it has no samples of its own, but the others keep their distance from it
  s.counts[2] = 6;
  s.steps[0] = {0.5, 0, 1};
  s.starts[1] = {3, 4, 1};
  s.starts[2] = {3, 4, 1};
  expect_sentence(kGeneral +
                      "Parallel_Nearest_8U: ray 0, sample 4: its fixed-point x is 1024, outside -1024 to "
                      "1024",
                  [&] { zox_Volume_RayCast_General_Parallel_Nearest_8U(&s.volume, &s.rays); });
}

TEST(Stack, FirstSliceOfTheOnlyRegion) {
  StackScene s(1);
  s.regslice[0] = 1;
  expect_sentence(kGeneral + "Parallel_Nearest_8U: regslice[0] is 1, but must be 0 on a one-region volume",
                  [&] { zox_Volume_RayCast_General_Parallel_Nearest_8U(&s.volume, &s.rays); });
}

TEST(Stack, TablesOfFixedSize) {
  StackScene s(2);
  s.slices.assign(513, s.slices[0]);
  s.volume.slices = s.slices.data();
  s.volume.nslices = 513;
  EXPECT_EQ(said([&] { zox_Volume_RayCast_General_Divergent_Nearest_8U(&s.volume, &s.rays); }), "");
  const std::string text = "_8U: nslices is 513, but this operation takes at most 512 slices";
  expect_sentence(kGeneral + "Divergent_Nearest_Bit" + text,
                  [&] { zox_Volume_RayCast_General_Divergent_Nearest_Bit_8U(&s.volume, &s.rays); });
  expect_sentence(kGeneral + "Parallel_Nearest_Bit" + text,
                  [&] { zox_Volume_RayCast_General_Parallel_Nearest_Bit_8U(&s.volume, &s.rays); });
  expect_sentence(kGeneral + "Parallel_Nearest" + text,
                  [&] { zox_Volume_RayCast_General_Parallel_Nearest_8U(&s.volume, &s.rays); });
}

TEST(Stack, TablesOfFixedSizeForRegions) {
  StackScene s(2);
  s.regslice.assign(512, 0);
  s.regscale.assign(512, 1);
  s.regbounds.assign(513, 8);
  s.regbounds[0] = 0;
  s.volume.nregions = 512;
  s.volume.regslice = s.regslice.data();
  s.volume.regscale = s.regscale.data();
  s.volume.regbounds = s.regbounds.data();
  expect_sentence(kGeneral +
                      "Parallel_Nearest_16S: nregions is 512, but this operation takes at most 511 "
                      "regions",
                  [&] { zox_Volume_RayCast_General_Parallel_Nearest_16S(&s.volume, &s.rays); });
}

}  // namespace
}  // namespace checker_test
