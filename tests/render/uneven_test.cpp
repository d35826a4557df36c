// Uneven slices are interpolated as they stand.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "effort.h"
#include "library.h"

using namespace zox_test;

namespace {

std::unique_ptr<Scene> uneven_scene(const std::vector<double>& positions, int type = ZOX_RENDER_INT16) {
  std::vector<double> voxels;
  for (size_t z = 0; z < positions.size(); ++z)
    for (int i = 0; i < 6; ++i) voxels.push_back(100.0 * static_cast<double>(z) + i);
  auto scene = make_scene(type, {3, 2, static_cast<int>(positions.size())}, std::move(voxels));
  scene->positions = positions;
  scene->array.positions = scene->positions.data();
  return scene;
}

class Uneven : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(, Uneven, testing::Values(ZOX_RENDER_BRICKS, ZOX_RENDER_STACK),
                         [](const auto& info) {
                           return info.param == ZOX_RENDER_BRICKS ? "bricks" : "stack";
                         });

// One-depth views from below at heights worked out by hand: between the slices at 1 and 5 mm a
// millimetre is a quarter of the way.
TEST_P(Uneven, HeightsBetweenSlicesAreInterpolated) {
  const auto scene = uneven_scene({0, 1, 5, 5.5, 7.5, 8.5});
  const Volume volume = make_volume(*scene, GetParam());
  ASSERT_NE(volume, nullptr);
  zox_render_view view;
  zox_render_view_init(&view);
  ASSERT_EQ(zox_render_view_by_name(&view, "inferior"), ZOX_RENDER_OK);
  view.projection = ZOX_RENDER_ORTHOGRAPHIC;
  view.width = 3;
  view.height = 2;
  view.pixel_size = 1;
  EXPECT_EQ(info_of(volume).center[2], 4.25);
  const struct {
    double height, value;
  } stops[] = {{0, 0}, {0.5, 50}, {1, 100}, {2, 125}, {3, 150}, {5, 200}, {5.25, 250}, {6.5, 350}, {8, 450}};
  for (const auto& stop : stops) {
    view.slab_near = view.slab_far = stop.height - 4.25;
    const Picture picture = render(volume, view);
    ASSERT_EQ(picture.status, ZOX_RENDER_OK) << zox_render_last_error();
    for (size_t i = 0; i < 6; ++i)
      EXPECT_NEAR(picture.samples[i], stop.value + static_cast<double>(i), 1)
          << "at " << stop.height << " mm";
  }
}

TEST_P(Uneven, PicturesAreThePlainRenderers) {
  const Seeds seeds = zox_test::seeds(1, 60);
  int64_t pixels = 0;
  for (uint64_t seed = seeds.first; seed < seeds.first + seeds.count; ++seed) {
    SCOPED_TRACE("ZOX_TEST_SEED=" + std::to_string(seed));
    Random random(seed);
    const auto scene = random_scene(random, random.pick({ZOX_RENDER_UINT8, ZOX_RENDER_INT16}), 24);
    draw_positions(*scene, random);
    zox_render_view view = random_view(random, 28);
    view.reduction = random.whole(ZOX_RENDER_MAXIMUM, ZOX_RENDER_LARGEST_MAGNITUDE);
    const int precision = random.pick({ZOX_RENDER_PRECISION_VOXEL, ZOX_RENDER_PRECISION_FINE});
    compare_with_plain(*scene, make_volume(*scene, GetParam(), precision), view, &pixels);
    if (HasFailure()) return;
  }
  EXPECT_GT(pixels, 0);
}

// Even positions are the even volume: same bytes, one region.
TEST_P(Uneven, EvenPositionsAreAnEvenVolume) {
  Random random(7);
  const auto even = random_scene(random, ZOX_RENDER_INT16, 20);
  even->array.axes[2][0] = even->array.axes[2][1] = 0;
  even->array.axes[2][2] = 1.5;
  const zox_render_view view = random_view(random, 40);
  const Volume plain = make_volume(*even, GetParam());
  for (int z = 0; z < even->array.size[2]; ++z) even->positions.push_back(1.5 * z);
  even->array.positions = even->positions.data();
  const Volume positioned = make_volume(*even, GetParam());
  ASSERT_TRUE(plain != nullptr && positioned != nullptr);
  EXPECT_EQ(info_of(positioned).regions, 1);
  EXPECT_EQ(difference(render(plain, view), render(positioned, view)), "");
}

TEST_P(Uneven, RunsOfEqualGapsAreRegions) {
  EXPECT_EQ(info_of(make_volume(*uneven_scene({0, 1, 2, 3}), GetParam())).regions, 1);
  EXPECT_EQ(info_of(make_volume(*uneven_scene({0, 1, 2, 5, 8}), GetParam())).regions, 2);
  EXPECT_EQ(info_of(make_volume(*uneven_scene({0, 1, 2, 2.5, 3.5, 4.5}), GetParam())).regions, 3);
}

TEST_P(Uneven, PositionsThatDoNotAscendAreRefused) {
  for (const std::vector<double>& positions : {std::vector<double>{0, 1, 1, 2},
                                               {0, 2, 1, 3},
                                               {3, 2, 1, 0},
                                               {0, 1, 2, std::numeric_limits<double>::infinity()},
                                               {0, NAN, 2, 3}}) {
    const auto scene = uneven_scene(positions);
    const zox_render_volume_options options = options_of(GetParam());
    zox_render_volume* volume = nullptr;
    EXPECT_EQ(zox_render_volume_create(&scene->array, &options, nullptr, &volume), ZOX_RENDER_BAD_ARGUMENT);
    EXPECT_STRNE(zox_render_last_error(), "");
  }
}

}  // namespace
