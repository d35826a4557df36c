// Which of the library's operations the renderer uses for which picture.
#include <gtest/gtest.h>

#include "tile_caster.h"

using namespace zox_mip;

namespace {

constexpr auto kPerspective = Projection::kPerspective;
constexpr auto kOrthographic = Projection::kOrthographic;
constexpr auto kNearest = Interpolation::kNearest;
constexpr auto kTrilinear = Interpolation::kTrilinear;
constexpr auto kBytes = VoxelType::kBytes;
constexpr auto kShorts = VoxelType::kShorts;

TEST(OperationChoice, Blocked) {
  const auto choose = [](Projection projection, Interpolation interpolation, VoxelType type) {
    return cast_operation(Layout::kBlocked, projection, interpolation, type, 600);
  };
  EXPECT_EQ(choose(kPerspective, kNearest, kBytes), zox_Volume_RayCast_Blocked_Divergent_Nearest_8U);
  EXPECT_EQ(choose(kPerspective, kNearest, kShorts), zox_Volume_RayCast_Blocked_Divergent_Nearest_16S);
  EXPECT_EQ(choose(kPerspective, kTrilinear, kBytes), zox_Volume_RayCast_Blocked_Divergent_Trilinear_8U);
  EXPECT_EQ(choose(kPerspective, kTrilinear, kShorts), zox_Volume_RayCast_Blocked_Divergent_Trilinear_16S);
  EXPECT_EQ(choose(kOrthographic, kNearest, kBytes), zox_Volume_RayCast_Blocked_Parallel_Nearest_8U);
  EXPECT_EQ(choose(kOrthographic, kNearest, kShorts), zox_Volume_RayCast_Blocked_Parallel_Nearest_16S);
  EXPECT_EQ(choose(kOrthographic, kTrilinear, kBytes), zox_Volume_RayCast_Blocked_Parallel_Trilinear_8U);
  EXPECT_EQ(choose(kOrthographic, kTrilinear, kShorts), zox_Volume_RayCast_Blocked_Parallel_Trilinear_16S);
}

TEST(OperationChoice, Stack) {
  const auto choose = [](Projection projection, Interpolation interpolation, VoxelType type, int slices) {
    return cast_operation(Layout::kStack, projection, interpolation, type, slices);
  };
  EXPECT_EQ(choose(kPerspective, kNearest, kBytes, 512), zox_Volume_RayCast_General_Divergent_Nearest_8U);
  EXPECT_EQ(choose(kPerspective, kNearest, kShorts, 512), zox_Volume_RayCast_General_Divergent_Nearest_16S);
  EXPECT_EQ(choose(kPerspective, kTrilinear, kBytes, 512), zox_Volume_RayCast_General_Divergent_Trilinear_8U);
  EXPECT_EQ(choose(kPerspective, kTrilinear, kShorts, 512),
            zox_Volume_RayCast_General_Divergent_Trilinear_16S);
  EXPECT_EQ(choose(kOrthographic, kNearest, kBytes, 512), zox_Volume_RayCast_General_Parallel_Nearest_8U);
  EXPECT_EQ(choose(kOrthographic, kNearest, kShorts, 512), zox_Volume_RayCast_General_Parallel_Nearest_16S);
  EXPECT_EQ(choose(kOrthographic, kTrilinear, kBytes, 513), zox_Volume_RayCast_General_Parallel_Trilinear_8U);
  EXPECT_EQ(choose(kOrthographic, kTrilinear, kShorts, 513),
            zox_Volume_RayCast_General_Parallel_Trilinear_16S);
  // The slice lists of the parallel nearest operations hold 512 slices.
  EXPECT_EQ(choose(kOrthographic, kNearest, kBytes, 513), zox_Volume_RayCast_General_Divergent_Nearest_8U);
  EXPECT_EQ(choose(kOrthographic, kNearest, kShorts, 513), zox_Volume_RayCast_General_Divergent_Nearest_16S);
}

}  // namespace
