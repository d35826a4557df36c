// Where views look: names, angles, orientation, zoom, centre, and where samples lie.
#include <gtest/gtest.h>

#include <string>

#include "effort.h"
#include "library.h"

using namespace zox_test;

namespace {

void expect_near(const Vec& wanted, const double found[3], double granted, const char* what) {
  for (size_t a = 0; a < 3; ++a) EXPECT_NEAR(wanted[a], found[a], granted) << what << ", axis " << a;
}

std::unique_ptr<Scene> box(int x, int y, int z) {
  return make_scene(ZOX_RENDER_UINT8, {x, y, z}, std::vector<double>(static_cast<size_t>(x * y * z), 7));
}

TEST(View, NamesStandForSides) {
  const struct {
    const char* names[3];
    Vec forward, up;
  } sides[] = {{{"anterior", "front", "coronal"}, {0, 1, 0}, {0, 0, 1}},
               {{"posterior", "back", "Back"}, {0, -1, 0}, {0, 0, 1}},
               {{"left", "sagittal", "LEFT"}, {-1, 0, 0}, {0, 0, 1}},
               {{"right", "Right", "riGHT"}, {1, 0, 0}, {0, 0, 1}},
               {{"superior", "top", "axial"}, {0, 0, -1}, {0, -1, 0}},
               {{"inferior", "bottom", "Bottom"}, {0, 0, 1}, {0, -1, 0}}};
  const auto scene = box(5, 6, 7);
  const Volume volume = make_volume(*scene, ZOX_RENDER_BRICKS);
  for (const auto& side : sides)
    for (const char* name : side.names) {
      zox_render_view view;
      zox_render_view_init(&view);
      ASSERT_EQ(zox_render_view_by_name(&view, name), ZOX_RENDER_OK) << name;
      const zox_render_geometry geometry = geometry_of(volume, view);
      expect_near(side.forward, geometry.forward, 0, name);
      expect_near(side.up, geometry.up, 0, name);
      expect_near(cross(side.forward, side.up), geometry.right, 0, name);
    }
  zox_render_view view;
  zox_render_view_init(&view);
  for (const char* name : {"", "lef", "leftt", "oblique"})
    EXPECT_EQ(zox_render_view_by_name(&view, name), ZOX_RENDER_BAD_ARGUMENT) << name;
}

TEST(View, RollTurnsUpClockwise) {
  const auto scene = box(5, 6, 7);
  zox_render_view view;
  zox_render_view_init(&view);
  view.roll = 90;  // what was at the right is up
  const zox_render_geometry geometry = geometry_of(make_volume(*scene, ZOX_RENDER_BRICKS), view);
  expect_near({1, 0, 0}, geometry.up, 1e-15, "up");
  expect_near({0, 0, -1}, geometry.right, 1e-15, "right");
}

// All corners of the box lie in the picture, and one of them at its edge; at twice the zoom it is half.
TEST(View, ZoomOneJustFits) {
  const Seeds seeds = zox_test::seeds(1, 50);
  for (uint64_t seed = seeds.first; seed < seeds.first + seeds.count; ++seed) {
    Random random(seed);
    const auto scene = random_scene(random, ZOX_RENDER_UINT8, 12);
    zox_render_view view = random_view(random, 300);
    view.zoom = 1;
    const Volume volume = make_volume(*scene, ZOX_RENDER_BRICKS);
    const zox_render_geometry geometry = geometry_of(volume, view);
    const zox_render_volume_info info = info_of(volume);
    double widest = 0;
    for (const auto& corner : info.corners) {
      const Vec at =
          Vec{corner[0], corner[1], corner[2]} - Vec{info.center[0], info.center[1], info.center[2]};
      const Vec right = {geometry.right[0], geometry.right[1], geometry.right[2]};
      const Vec up = {geometry.up[0], geometry.up[1], geometry.up[2]};
      const Vec forward = {geometry.forward[0], geometry.forward[1], geometry.forward[2]};
      const bool perspective = view.projection == ZOX_RENDER_PERSPECTIVE;
      const double nearer =
          perspective ? geometry.eye_distance / (geometry.eye_distance + dot(at, forward)) : 1;
      EXPECT_GT(nearer, 0) << "a corner behind the viewer";
      widest = std::max({widest, std::abs(dot(at, right)) * nearer * 2 / view.width,
                         std::abs(dot(at, up)) * nearer * 2 / view.height});
    }
    EXPECT_LE(widest, geometry.pixel_size * (1 + 1e-9)) << "ZOX_TEST_SEED=" << seed;
    view.zoom = 2;
    EXPECT_NEAR(geometry_of(volume, view).pixel_size, geometry.pixel_size / 2, 1e-9 * geometry.pixel_size);
  }
}

TEST(View, TheLongerSideSpansTheFieldOfView) {
  const auto scene = box(5, 6, 7);
  zox_render_view view;
  zox_render_view_init(&view);
  view.width = 300;
  view.height = 700;
  view.field_of_view = 90;  // the tangent of half of it is 1
  view.pixel_size = 0.5;
  const zox_render_geometry geometry = geometry_of(make_volume(*scene, ZOX_RENDER_BRICKS), view);
  EXPECT_NEAR(geometry.eye_distance, 175, 1e-9);
  EXPECT_EQ(geometry.pixel_size, 0.5);
}

TEST(View, TheStepCountsInTheSmallestSpacing) {
  const auto scene = box(5, 6, 7);
  scene->array.axes[0][0] = 0.5;
  scene->array.axes[1][1] = 2;
  scene->array.axes[2][2] = 3;
  zox_render_view view;
  zox_render_view_init(&view);
  view.step = 1.5;
  EXPECT_NEAR(geometry_of(make_volume(*scene, ZOX_RENDER_BRICKS), view).step, 0.75, 1e-12);
}

// locate and geometry agree with the plain renderer for any volume and view.
TEST(View, SamplesLieWhereThePlainRenderersDo) {
  const Seeds seeds = zox_test::seeds(1, 100);
  for (uint64_t seed = seeds.first; seed < seeds.first + seeds.count; ++seed) {
    SCOPED_TRACE("ZOX_TEST_SEED=" + std::to_string(seed));
    Random random(seed);
    const auto scene = random_scene(random, ZOX_RENDER_UINT8, 20);
    if (random.chance(0.3)) draw_positions(*scene, random);
    zox_render_view view = random_view(random, 100);
    const Volume volume = make_volume(*scene, ZOX_RENDER_STACK);
    const zox_render_volume_info info = info_of(volume);
    if (random.chance(0.3)) {
      view.use_center = 1;
      for (int a = 0; a < 3; ++a) view.center[a] = info.center[a] + random.real(-5, 5);
    }
    if (random.chance(0.3)) {  // mirrored
      view.use_orientation = 1;
      const double mirrored[3][3] = {{0, -0.6, 0.8}, {0, 0.8, 0.6}, {1, 0, 0}};
      std::copy(&mirrored[0][0], &mirrored[0][0] + 9, &view.orientation[0][0]);
    }
    const zox_render_geometry geometry = geometry_of(volume, view);
    const PlainVolume plain = plain_volume(*scene, volume);
    const PlainRenderer renderer(plain, view, geometry.pixel_size, geometry.step);
    expect_near(renderer.right(), geometry.right, 1e-12, "right");
    expect_near(renderer.up(), geometry.up, 1e-12, "up");
    expect_near(renderer.forward(), geometry.forward, 1e-12, "forward");
    const double distance = renderer.eye_distance();
    EXPECT_NEAR(distance, geometry.eye_distance, 1e-9 * (1 + distance));
    if (!view.use_center) expect_near(plain.center(), info.center, 1e-9 * 1e4, "centre");
    for (int i = 0; i < 10; ++i) {
      const int column = random.whole(0, view.width - 1), row = random.whole(0, view.height - 1);
      const int sample = random.whole(-20, 20);
      const Vec wanted = renderer.position(column, row, sample);
      double position[3], voxel[3];
      ASSERT_EQ(zox_render_locate(volume.get(), &view, column, row, sample, position, voxel), ZOX_RENDER_OK);
      // A thousandth of a voxel, 3 mm at most, is what positions may stray.
      expect_near(wanted, position, 1e-3, "position");
      const Vec index = renderer.voxel(wanted);
      const bool inside = index[2] >= 0 && index[2] <= plain.size[2] - 1;
      if (plain.positions.empty() || inside) expect_near(index, voxel, 2e-3, "voxel");
    }
  }
}

// A viewer within the volume sees what is before it only.
TEST(View, NothingBehindTheViewerIsSeen) {
  std::vector<double> voxels(21 * 21 * 21, 10);
  for (size_t z = 0; z < 21; ++z)
    for (size_t x = 0; x < 21; ++x) voxels[(z * 21 + 1) * 21 + x] = 200;  // a wall at the face, y = 1
  const auto scene = make_scene(ZOX_RENDER_UINT8, {21, 21, 21}, voxels);
  zox_render_view view;
  zox_render_view_init(&view);
  view.width = view.height = 16;
  view.field_of_view = 90;
  view.pixel_size = 0.5;  // the eye is 4 mm before the middle at y = 10
  for (const int layout : {ZOX_RENDER_BRICKS, ZOX_RENDER_STACK}) {
    const Volume volume = make_volume(*scene, layout);
    const Picture picture = render(volume, view);
    ASSERT_EQ(picture.status, ZOX_RENDER_OK) << zox_render_last_error();
    const zox_render_volume_info info = info_of(volume);
    for (const int16_t sample : picture.samples)
      EXPECT_EQ(sample * info.sample_slope + info.sample_intercept, 10);
  }
}

// Slabs, centres, mirrored orientations, one-depth views and pixel sizes beside the plain renderer.
TEST(View, SlabsAndCentresAreThePlainRenderers) {
  const Seeds seeds = zox_test::seeds(1, 100);
  int64_t pixels = 0;
  for (uint64_t seed = seeds.first; seed < seeds.first + seeds.count; ++seed) {
    SCOPED_TRACE("ZOX_TEST_SEED=" + std::to_string(seed));
    Random random(seed);
    const auto scene = random_scene(random, random.pick({ZOX_RENDER_UINT8, ZOX_RENDER_INT16}), 24);
    zox_render_view view = random_view(random, 28);
    const Volume volume = make_volume(*scene, random.pick({ZOX_RENDER_BRICKS, ZOX_RENDER_STACK}));
    const zox_render_volume_info info = info_of(volume);
    view.pixel_size = random.pick({0.0, 0.31, 2.0});
    if (random.chance(0.5)) {
      view.use_center = 1;
      for (int a = 0; a < 3; ++a) view.center[a] = info.center[a] + random.real(-5, 5);
    }
    view.slab_near = random.real(-10, 3);
    view.slab_far = random.chance(0.3) ? view.slab_near : view.slab_near + random.real(0, 10);
    view.reduction = random.whole(ZOX_RENDER_MAXIMUM, ZOX_RENDER_LARGEST_MAGNITUDE);
    compare_with_plain(*scene, volume, view, &pixels);
    if (HasFailure()) return;
  }
  EXPECT_GT(pixels, 0);
}

}  // namespace
