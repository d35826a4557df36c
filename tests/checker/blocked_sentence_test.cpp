// Samples outside a blocked volume, by every rule that places them.
#include <cmath>

#include "violations.h"

namespace checker_test {
namespace {

const std::string kBlocked = "zox_Volume_RayCast_Blocked_";

TEST(Blocked, NearestReachesHalfAVoxelOut) {
  BlockedScene s;
  const auto call = [&] { zox_Volume_RayCast_Blocked_Divergent_Nearest_8U(&s.volume, &s.rays); };
  s.starts[1] = {-0.5, 63.25, 31.25};
  s.steps[1] = {0, 0, 0};
  EXPECT_EQ(said(call), "");
  s.starts[1][1] = 63.5;
  expect_sentence(kBlocked +
                      "Divergent_Nearest_8U: ray 1, sample 0: y = 63.5, but this operation samples the "
                      "volume at -0.5 <= y < 63.5",
                  call);
}

TEST(Blocked, PositionsAreFollowedInFixedPoint) {
  BlockedScene s;
  // Three steps of 0.1 are 3 * 104857 units, less than 0.3 of a voxel: the last sample stays inside
  // where 63.2 + 3 * 0.1 = 63.5 would not.
  s.starts[0][0] = 63.2;
  s.steps[0] = {0.1, 0, 0};
  EXPECT_EQ(said([&] { zox_Volume_RayCast_Blocked_Divergent_Nearest_8U(&s.volume, &s.rays); }), "");
  s.steps[0][0] = 0.11;
  expect_sentence(kBlocked +
                      "Divergent_Nearest_8U: ray 0, sample 3: x = 63.5299988, but this operation "
                      "samples the volume at -0.5 <= x < 63.5",
                  [&] { zox_Volume_RayCast_Blocked_Divergent_Nearest_8U(&s.volume, &s.rays); });
}

TEST(Blocked, TrilinearReadsTheNextVoxel) {
  BlockedScene s;
  const auto call = [&] { zox_Volume_RayCast_Blocked_Divergent_Trilinear_16S(&s.volume, &s.rays); };
  s.starts[0] = {62, 62, 0};
  s.counts[0] = 2;
  EXPECT_EQ(said(call), "");
  s.counts[0] = 3;
  expect_sentence(kBlocked +
                      "Divergent_Trilinear_16S: ray 0, sample 2: x = 63, but this operation samples "
                      "the volume at 0 <= x < 63",
                  call);
  s.starts[0] = {-0.25, 0, 0};
  expect_sentence(kBlocked +
                      "Divergent_Trilinear_16S: ray 0, sample 0: x = -0.25, but this operation "
                      "samples the volume at 0 <= x < 63",
                  call);
}

TEST(Blocked, NotANumber) {
  BlockedScene s;
  s.starts[2][1] = std::nan("");
  expect_sentence(kBlocked +
                      "Parallel_Trilinear_16S: ray 2, sample 0: y = nan, but this operation samples "
                      "the volume at 0 <= y < 63",
                  [&] { zox_Volume_RayCast_Blocked_Parallel_Trilinear_16S(&s.volume, &s.rays); });
}

// In fixed point a ray far away makes the others seem close, so that they go sample by sample: then an
// offset from ray 0 is cut toward zero, and ray 2 comes to lie one unit higher, on 63.
TEST(Blocked, ARayFarAwayChoosesTheWay) {
  BlockedScene s;
  s.starts = {Point{20, 63.25, 5}, Point{-1e9, 63.25, 5}, Point{5, 63 - 0x1p-21, 5}};
  s.counts = {0, 0, 1};
  s.steps[0] = {0, 0, 0.25};
  expect_sentence(kBlocked +
                      "Parallel_Trilinear_8U: ray 2, sample 0: y = 63, but this operation samples the "
                      "volume at 0 <= y < 63",
                  [&] { zox_Volume_RayCast_Blocked_Parallel_Trilinear_8U(&s.volume, &s.rays); });
}

TEST(Blocked, DepthIsCheckedOnceRegistered) {
  BlockedScene s;
  zox_check_blocked(s.volume.data, 12);
  // Rays 0 and 2 start at z = 8 and 8.25 and go 3 and 2 slices deep: ray 0 reads slice 12 with its
  // last sample.
  expect_sentence(kBlocked +
                      "Parallel_Trilinear_8U: ray 0, sample 3: z = 11, but this operation samples the "
                      "volume at 0 <= z < 11",
                  [&] { zox_Volume_RayCast_Blocked_Parallel_Trilinear_8U(&s.volume, &s.rays); });
  EXPECT_EQ(said([&] { zox_Volume_RayCast_Blocked_Parallel_Nearest_8U(&s.volume, &s.rays); }), "");
  zox_check_forget(s.volume.data);
  EXPECT_EQ(said([&] { zox_Volume_RayCast_Blocked_Parallel_Trilinear_8U(&s.volume, &s.rays); }), "");
}

TEST(Blocked, PlaneOverTheVoxels) {
  BlockedScene s;
  s.planes[0] = s.voxels.data() + 131071;
  expect_sentence(kBlocked + "Divergent_Nearest_8U: sample 0: planes[0] overlaps the voxels",
                  [&] { zox_Volume_RayCast_Blocked_Divergent_Nearest_8U(&s.volume, &s.rays); });
}

}  // namespace
}  // namespace checker_test
