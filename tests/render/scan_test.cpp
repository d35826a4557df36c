// Whole pictures of real scans beside the plain renderer: no speck, no pixel off by more than one unit.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <tuple>

#include "effort.h"
#include "library.h"
#include "scans.h"

using namespace zox_test;

namespace {

// Inflated once for all tests of this process.
const Scene* scan(const std::string& name) {
  static const std::unique_ptr<Scene> brain = read_brain(), head = read_head();
  static const std::unique_ptr<Scene> head8 = head == nullptr ? nullptr : head_in_8_bits(*head);
  return (name == "brain" ? brain : name == "head16" ? head : head8).get();
}

// What a ray's maximum is at least and at most, and the largest voxel that any of its samples is made from.
struct Ideal {
  double at_least = -std::numeric_limits<double>::infinity();
  double at_most = at_least, largest = at_least;
};

std::vector<Ideal> ideal_picture(const PlainRenderer& renderer, const zox_render_view& view) {
  std::vector<Ideal> ideal;
  std::vector<PlainSample> samples;
  for (int row = 0; row < view.height; ++row)
    for (int column = 0; column < view.width; ++column) {
      renderer.ray(column, row, samples);
      Ideal& pixel = ideal.emplace_back();
      for (const PlainSample& at : samples) {
        if (at.sure) pixel.at_least = std::max(pixel.at_least, at.low);
        pixel.at_most = std::max(pixel.at_most, at.high);
        pixel.largest = std::max(pixel.largest, at.largest);
      }
    }
  return ideal;
}

// Made whole, towards 0 as samples are.
double whole(double value, double unit) { return std::trunc(value / unit) * unit; }

void compare(const Volume& volume, const zox_render_view& view, const std::vector<Ideal>& ideal,
             double granted) {
  const zox_render_volume_info info = info_of(volume);
  const Picture picture = render(volume, view);
  ASSERT_EQ(picture.status, ZOX_RENDER_OK) << zox_render_last_error();
  int specks = 0, off = 0;
  int64_t rays = 0;
  double largest_difference = 0;
  for (size_t i = 0; i < ideal.size(); ++i) {
    const bool nothing = picture.samples[i] == ZOX_RENDER_NOTHING;
    if (nothing && !std::isfinite(ideal[i].at_least)) continue;
    const double value = picture.samples[i] * info.sample_slope + info.sample_intercept;
    const double unit = info.sample_slope;
    const double difference =
        nothing ? 1e9
                : std::max(whole(ideal[i].at_least, unit) - value, value - whole(ideal[i].at_most, unit));
    rays += !nothing;
    specks += value > ideal[i].largest;
    off += difference > granted;
    largest_difference = std::max(largest_difference, difference);
  }
  EXPECT_EQ(specks, 0);
  EXPECT_EQ(off, 0) << "pixels of " << rays << ", the largest by " << largest_difference;
  EXPECT_GT(rays, view.width * view.height / 4);
}

using Ways = std::tuple<const char*, int, int>;
class Scan : public testing::TestWithParam<Ways> {};

TEST_P(Scan, HasNoSpeckAndNoPixelOffByMoreThanOne) {
  const auto& [name, projection, interpolation] = GetParam();
  const Scene* scene = scan(name);
  if (scene == nullptr) GTEST_SKIP() << "mricron-data or invesalius-examples is not installed";
  zox_render_view view;
  zox_render_view_init(&view);
  view.azimuth = 30;
  view.elevation = 10;
  view.projection = projection;
  view.interpolation = interpolation;
  view.width = view.height = std::clamp(static_cast<int>(160 * std::sqrt(effort_scale())), 32, 512);
  const Volume first = make_volume(*scene, ZOX_RENDER_STACK, ZOX_RENDER_PRECISION_VOXEL);
  const zox_render_volume_info info = info_of(first);
  PlainVolume plain{{info.size[0], info.size[1], info.size[2]}, scene->voxels, {}, {}, {}};
  for (size_t a = 0; a < 3; ++a) std::copy_n(scene->array.axes[a], 3, plain.axes[a].begin());
  // Trilinear: ideal positions, but whether a sample lies within may depend on how far it strays.
  Play play = play_of(*scene, info, view);
  if (interpolation == ZOX_RENDER_TRILINEAR) play = {0, 0, 0, 0, 0x1p-12};
  const zox_render_geometry geometry = geometry_of(first, view);
  const std::vector<Ideal> ideal =
      ideal_picture(PlainRenderer(plain, view, geometry.pixel_size, geometry.step, play), view);
  for (const int layout : {ZOX_RENDER_BRICKS, ZOX_RENDER_STACK})
    for (const int precision : {ZOX_RENDER_PRECISION_VOXEL, ZOX_RENDER_PRECISION_FINE}) {
      const bool fine = precision == ZOX_RENDER_PRECISION_FINE && scene->array.type == ZOX_RENDER_UINT8;
      SCOPED_TRACE((layout == ZOX_RENDER_BRICKS ? "bricks, " : "stack, ") +
                   std::string(fine ? "fine" : "voxel"));
      if (precision == ZOX_RENDER_PRECISION_FINE && !fine) continue;
      // Samples of 7 more bits differ by what positions stray alone.
      compare(make_volume(*scene, layout, precision), view, ideal, fine ? 0.25 : 1);
    }
}

INSTANTIATE_TEST_SUITE_P(, Scan,
                         testing::Combine(testing::Values("brain", "head16", "head8"),
                                          testing::Values(ZOX_RENDER_PERSPECTIVE, ZOX_RENDER_ORTHOGRAPHIC),
                                          testing::Values(ZOX_RENDER_TRILINEAR, ZOX_RENDER_NEAREST)),
                         [](const auto& info) {
                           return std::string(std::get<0>(info.param)) +
                                  (std::get<1>(info.param) == ZOX_RENDER_PERSPECTIVE ? "_perspective"
                                                                                     : "_orthographic") +
                                  (std::get<2>(info.param) == ZOX_RENDER_TRILINEAR ? "_trilinear"
                                                                                   : "_nearest");
                         });

}  // namespace
