// Small pictures whose every pixel can be worked out by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "library.h"

using namespace zox_test;

namespace {

// Numbers 0 .. 59, x fastest: 5 columns, 4 rows, 3 slices, one millimetre apart.
std::unique_ptr<Scene> counted(int type = ZOX_RENDER_UINT8) {
  std::vector<double> voxels;
  for (int i = 0; i < 60; ++i) voxels.push_back(i);
  return make_scene(type, {5, 4, 3}, std::move(voxels));
}

// A pixel for every voxel, a sample for every slice in between.
zox_render_view voxel_view(const char* name, int width, int height) {
  zox_render_view view;
  zox_render_view_init(&view);
  EXPECT_EQ(zox_render_view_by_name(&view, name), ZOX_RENDER_OK);
  view.projection = ZOX_RENDER_ORTHOGRAPHIC;
  view.width = width;
  view.height = height;
  view.pixel_size = 1;
  return view;
}

std::vector<double> values(const Volume& volume, const zox_render_view& view) {
  const Picture picture = render(volume, view);
  EXPECT_EQ(picture.status, ZOX_RENDER_OK) << zox_render_last_error();
  const zox_render_volume_info info = info_of(volume);
  std::vector<double> found;
  for (const int16_t sample : picture.samples)
    found.push_back(sample == ZOX_RENDER_NOTHING ? std::nan("")
                                                 : sample * info.sample_slope + info.sample_intercept);
  return found;
}

class Directed : public testing::TestWithParam<int> {
 protected:
  Volume volume(const Scene& scene) const { return make_volume(scene, GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(, Directed, testing::Values(ZOX_RENDER_BRICKS, ZOX_RENDER_STACK),
                         [](const auto& info) {
                           return info.param == ZOX_RENDER_BRICKS ? "bricks" : "stack";
                         });

// From the front: x to the right of the picture, the head up; the largest is in the last row (y = 3).
TEST_P(Directed, TheFrontShowsTheLastRowOfACountedVolume) {
  const auto scene = counted();
  zox_render_view view = voxel_view("anterior", 5, 3);
  view.step = 0.5;  // the middle of four rows lies between two
  EXPECT_EQ(values(volume(*scene), view), (std::vector<double>{55, 56, 57, 58, 59,  //
                                                               35, 36, 37, 38, 39,  //
                                                               15, 16, 17, 18, 19}));
  view.reduction = ZOX_RENDER_MINIMUM;
  EXPECT_EQ(values(volume(*scene), view), (std::vector<double>{40, 41, 42, 43, 44,  //
                                                               20, 21, 22, 23, 24,  //
                                                               0, 1, 2, 3, 4}));
}

// From the patient's left the nose points to the left of the picture: y grows to the right.
TEST_P(Directed, TheLeftShowsTheLastColumn) {
  const auto scene = counted();
  EXPECT_EQ(values(volume(*scene), voxel_view("left", 4, 3)),
            (std::vector<double>{44, 49, 54, 59, 24, 29, 34, 39, 4, 9, 14, 19}));
}

// From the right, x before the ray grows, and the back is at the left of the picture.
TEST_P(Directed, TheRightIsTheLeftMirrored) {
  const auto scene = counted();
  EXPECT_EQ(values(volume(*scene), voxel_view("right", 4, 3)),
            (std::vector<double>{59, 54, 49, 44, 39, 34, 29, 24, 19, 14, 9, 4}));
}

TEST_P(Directed, TheBackHasThePatientsLeftAtTheLeft) {
  const auto scene = counted();
  zox_render_view view = voxel_view("posterior", 5, 3);
  view.step = 0.5;
  EXPECT_EQ(values(volume(*scene), view),
            (std::vector<double>{59, 58, 57, 56, 55, 39, 38, 37, 36, 35, 19, 18, 17, 16, 15}));
}

// Above and below show the face upwards, so the first row is at the top.
TEST_P(Directed, TopAndBottomShowTheFaceUpwards) {
  const auto scene = counted();
  const std::vector<double> top = values(volume(*scene), voxel_view("superior", 5, 4));
  const std::vector<double> bottom = values(volume(*scene), voxel_view("inferior", 5, 4));
  // The patient's left, where x is large, is at the left of the picture from above.
  for (size_t row = 0; row < 4; ++row)
    for (size_t column = 0; column < 5; ++column) {
      EXPECT_EQ(top[row * 5 + column], 40 + 5 * static_cast<double>(row) + 4 - static_cast<double>(column));
      EXPECT_EQ(bottom[row * 5 + column], 40 + 5 * static_cast<double>(row) + static_cast<double>(column));
    }
}

TEST_P(Directed, TheMeanIsRoundedHalvesUp) {
  // Along z: 1, 2, 2 -> 5/3 -> 2; 1, 2 -> 1.5 -> 2; -1, -2 -> -1.5 -> -1.
  const auto three = make_scene(ZOX_RENDER_INT16, {2, 2, 3}, {1, 0, 0, 0, 2, 0, 0, 1, 2, 0, 1, 1});
  zox_render_view view = voxel_view("inferior", 2, 2);
  view.reduction = ZOX_RENDER_MEAN;
  EXPECT_EQ(values(volume(*three), view), (std::vector<double>{2, 0, 0, 1}));
  const auto two = make_scene(ZOX_RENDER_INT16, {2, 2, 3}, {-1, 1, -3, 0, -2, 2, -3, 0, 9, 9, 9, 9});
  view.slab_near = -1;
  view.slab_far = 0;  // slices 0 and 1, nearest first from below
  EXPECT_EQ(values(volume(*two), view), (std::vector<double>{-1, 2, -3, 0}));
}

// The value farthest from 0, with its sign; the positive of two.
TEST_P(Directed, TheLargestMagnitudeKeepsItsSign) {
  const auto scene = make_scene(ZOX_RENDER_INT16, {2, 2, 3}, {-5, 3, 7, 0, 4, -9, -7, 0, 1, 2, 0, -1});
  zox_render_view view = voxel_view("inferior", 2, 2);
  view.reduction = ZOX_RENDER_LARGEST_MAGNITUDE;
  EXPECT_EQ(values(volume(*scene), view), (std::vector<double>{-5, -9, 7, -1}));
  scene->array.intercept = 3;  // -2, 6, 10, 3 | 7, -6, -4, 3 | 4, 5, 3, 2
  EXPECT_EQ(values(volume(*scene), view), (std::vector<double>{7, 6, 10, 3}));
}

// The largest value, not the largest stored number.
TEST_P(Directed, ANegativeSlopeTurnsTheOrder) {
  const auto scene = make_scene(ZOX_RENDER_INT16, {2, 2, 2}, {1, 2, 3, 4, 8, 7, 6, 5});
  scene->array.slope = -2;
  scene->array.intercept = 10;
  zox_render_view view = voxel_view("inferior", 2, 2);
  view.step = 0.5;
  EXPECT_EQ(values(volume(*scene), view), (std::vector<double>{8, 6, 4, 2}));
  view.reduction = ZOX_RENDER_MINIMUM;
  EXPECT_EQ(values(volume(*scene), view), (std::vector<double>{-6, -4, -2, 0}));
}

// Slices at -1, 0 and 1 mm from the middle: the depth tells which one won, the nearest of equals.
TEST_P(Directed, DepthsNameTheNearestWinner) {
  const auto scene = make_scene(ZOX_RENDER_UINT8, {2, 2, 3}, {9, 1, 1, 5, 1, 9, 1, 5, 1, 1, 9, 5});
  for (const int interpolation : {ZOX_RENDER_TRILINEAR, ZOX_RENDER_NEAREST}) {
    zox_render_view view = voxel_view("inferior", 2, 2);
    view.interpolation = interpolation;
    EXPECT_EQ(render(volume(*scene), view).depths, (std::vector<int32_t>{-1, 0, 1, -1}));
    EXPECT_EQ(zox_render_view_by_name(&view, "SUPERIOR"), ZOX_RENDER_OK);  // x and the order turn
    EXPECT_EQ(render(volume(*scene), view).depths, (std::vector<int32_t>{0, 1, -1, -1}));
  }
}

TEST_P(Directed, AViewOfOneDepthIsOneSlice) {
  const auto scene = counted();
  zox_render_view view = voxel_view("inferior", 5, 4);
  for (int slice = 0; slice < 3; ++slice) {
    view.slab_near = view.slab_far = slice - 1;
    std::vector<double> wanted;
    for (int i = 0; i < 20; ++i) wanted.push_back(20 * slice + i);
    EXPECT_EQ(values(volume(*scene), view), wanted) << "slice " << slice;
  }
  view.slab_near = view.slab_far = 0.5;  // half-way between two slices, although the step is 1
  const std::vector<double> between = values(volume(*scene), view);
  for (size_t i = 0; i < 20; ++i) EXPECT_EQ(between[i], 30 + static_cast<double>(i));
}

TEST_P(Directed, ASlabHoldsBothItsFaces) {
  const auto scene = counted();
  zox_render_view view = voxel_view("inferior", 5, 4);
  view.slab_near = -1;
  view.slab_far = 0;
  EXPECT_EQ(values(volume(*scene), view).front(), 20);
  view.slab_near = 0.25;
  view.slab_far = 0.75;  // between two samples
  Picture picture = render(volume(*scene), view);
  EXPECT_EQ(picture.status, ZOX_RENDER_EMPTY);
  view.slab_near = 50;
  view.slab_far = 60;
  picture = render(volume(*scene), view);
  EXPECT_EQ(picture.status, ZOX_RENDER_EMPTY);
  EXPECT_STRNE(zox_render_last_error(), "");
}

// Pixels beyond the volume take nothing: the picture is two pixels larger on each side.
TEST_P(Directed, OutsideOfTheVolumeIsNothing) {
  const auto scene = counted();
  const zox_render_view view = voxel_view("inferior", 9, 8);
  const Picture picture = render(volume(*scene), view);
  const zox_render_volume_info info = info_of(volume(*scene));
  for (int row = 0; row < 8; ++row)
    for (int column = 0; column < 9; ++column) {
      const size_t at = static_cast<size_t>(row * 9 + column);
      const bool inside = row >= 2 && row < 6 && column >= 2 && column < 7;
      if (!inside) {
        EXPECT_EQ(picture.samples[at], ZOX_RENDER_NOTHING);
        EXPECT_EQ(picture.depths[at], ZOX_RENDER_NO_DEPTH);
        EXPECT_EQ(picture.pixels[at], 0);
      } else {
        EXPECT_EQ(picture.samples[at] * info.sample_slope + info.sample_intercept,
                  40 + (row - 2) * 5 + column - 2);
      }
    }
  EXPECT_EQ(picture.stats.rays, 20);
  EXPECT_EQ(picture.stats.samples, 60);
}

// All zeros and all 255s: nothing between may come out, in any cell, whatever the arithmetic.
TEST_P(Directed, FlatVolumesStayFlat) {
  for (const int type : {ZOX_RENDER_UINT8, ZOX_RENDER_INT8, ZOX_RENDER_INT16, ZOX_RENDER_UINT16})
    for (const double value : {traits_of(type).lowest, traits_of(type).highest, 1.0}) {
      const auto scene = make_scene(type, {9, 9, 9}, std::vector<double>(729, value));
      zox_render_view view;
      zox_render_view_init(&view);
      view.width = view.height = 40;
      view.azimuth = 33.3;
      view.elevation = 12.1;
      for (const int projection : {ZOX_RENDER_PERSPECTIVE, ZOX_RENDER_ORTHOGRAPHIC}) {
        view.projection = projection;
        for (const double found : values(volume(*scene), view))
          if (!std::isnan(found)) {
            ASSERT_NEAR(found, value, 1e-9) << traits_of(type).name;
          }
      }
    }
}

// Values that are not finite count as the lowest finite one.
TEST_P(Directed, ValuesThatAreNotFiniteAreTheLowest) {
  const double infinity = std::numeric_limits<double>::infinity();
  const auto scene = make_scene(ZOX_RENDER_FLOAT32, {2, 2, 2}, {-2, 8, infinity, -infinity, 1, 2, 3, NAN});
  const Volume made = volume(*scene);
  ASSERT_NE(made, nullptr);
  const zox_render_volume_info info = info_of(made);
  EXPECT_EQ(info.lowest, -2);
  EXPECT_EQ(info.highest, 8);
  zox_render_view view = voxel_view("inferior", 2, 2);
  view.step = 0.5;
  const std::vector<double> found = values(made, view);
  const double wanted[] = {1, 8, 3, -2};
  for (size_t i = 0; i < 4; ++i) EXPECT_NEAR(found[i], wanted[i], 1.01 * info.sample_slope) << "pixel " << i;
}

}  // namespace
