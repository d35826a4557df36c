// Views that make no sense: each is refused with a status and a sentence.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "library.h"
#include "refused.h"

using namespace zox_test;

namespace {

struct BadView {
  const char* name;
  std::function<void(zox_render_view&)> spoil;
};
void PrintTo(const BadView& bad, std::ostream* out) { *out << bad.name; }

class RefusedView : public testing::TestWithParam<BadView> {};

TEST_P(RefusedView, IsABadArgument) {
  const auto scene = good_scene();
  const Volume volume = make_volume(*scene, ZOX_RENDER_BRICKS);
  zox_render_view view;
  zox_render_view_init(&view);
  view.width = view.height = 16;
  GetParam().spoil(view);
  std::vector<uint8_t> pixels(16 * 16, 0x5A);
  zox_render_picture picture;
  zox_render_picture_init(&picture);
  picture.pixels = pixels.data();
  EXPECT_EQ(zox_render(volume.get(), &view, nullptr, &picture, nullptr), ZOX_RENDER_BAD_ARGUMENT);
  expect_sentence(GetParam().name);
  zox_render_geometry geometry;
  zox_render_geometry_init(&geometry);
  EXPECT_EQ(zox_render_view_geometry(volume.get(), &view, &geometry), ZOX_RENDER_BAD_ARGUMENT);
  double position[3];
  EXPECT_EQ(zox_render_locate(volume.get(), &view, 1, 1, 1, position, nullptr), ZOX_RENDER_BAD_ARGUMENT);
}

const BadView kBadViews[] = {
    {"no_record_size", [](auto& v) { v.record_size = 0; }},
    {"width_0", [](auto& v) { v.width = 0; }},
    {"width_negative", [](auto& v) { v.width = -1; }},
    {"height_8193", [](auto& v) { v.height = 8193; }},
    {"azimuth_not_a_number", [](auto& v) { v.azimuth = kNaN; }},
    {"elevation_infinite", [](auto& v) { v.elevation = kInfinity; }},
    {"roll_not_a_number", [](auto& v) { v.roll = kNaN; }},
    {"orientation_of_zeros", [](auto& v) { v.use_orientation = 1; }},
    {"orientation_that_is_skewed",
     [](auto& v) {
       v.use_orientation = 1;
       v.orientation[0][0] = v.orientation[1][0] = v.orientation[2][2] = 1;
     }},
    {"orientation_not_a_number",
     [](auto& v) {
       v.use_orientation = 1;
       v.orientation[0][0] = v.orientation[1][1] = 1;
       v.orientation[2][2] = kNaN;
     }},
    {"projection_2", [](auto& v) { v.projection = 2; }},
    {"field_of_view_0", [](auto& v) { v.field_of_view = 0; }},
    {"field_of_view_121", [](auto& v) { v.field_of_view = 121; }},
    {"field_of_view_not_a_number", [](auto& v) { v.field_of_view = kNaN; }},
    {"zoom_0", [](auto& v) { v.zoom = 0; }},
    {"zoom_negative", [](auto& v) { v.zoom = -1; }},
    {"zoom_infinite", [](auto& v) { v.zoom = kInfinity; }},
    {"pixel_size_not_a_number", [](auto& v) { v.pixel_size = kNaN; }},
    {"pixel_size_infinite", [](auto& v) { v.pixel_size = kInfinity; }},
    {"center_not_a_number", [](auto& v) { v.use_center = 1, v.center[1] = kNaN; }},
    {"center_infinite", [](auto& v) { v.use_center = 1, v.center[1] = kInfinity; }},
    {"step_0", [](auto& v) { v.step = 0; }},
    {"step_0_04", [](auto& v) { v.step = 0.04; }},
    {"step_65", [](auto& v) { v.step = 65; }},
    {"step_not_a_number", [](auto& v) { v.step = kNaN; }},
    {"interpolation_2", [](auto& v) { v.interpolation = 2; }},
    {"reduction_4", [](auto& v) { v.reduction = 4; }},
    {"reduction_negative", [](auto& v) { v.reduction = -1; }},
    {"slab_not_a_number", [](auto& v) { v.slab_near = kNaN; }},
    {"slab_turned_round", [](auto& v) { v.slab_near = 2, v.slab_far = 1; }},
    {"window_negative", [](auto& v) { v.window_width = -1; }},
    {"window_not_a_number", [](auto& v) { v.window_width = kNaN; }},
    {"window_center_infinite", [](auto& v) { v.window_width = 1, v.window_center = kInfinity; }},
};
INSTANTIATE_TEST_SUITE_P(, RefusedView, testing::ValuesIn(kBadViews),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
