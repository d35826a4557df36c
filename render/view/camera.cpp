#include "view/camera.h"

#include <algorithm>
#include <numbers>

namespace render {
namespace {

constexpr double kMaxDegrees = 1e6;
constexpr double kUnitTolerance = 1e-6;

void check_angles(const zox_render_view& view) {
  for (const double angle : {view.azimuth, view.elevation, view.roll})
    require(std::abs(angle) <= kMaxDegrees, "The angles must be finite and within a million degrees.");
}

void look_by_angles(const zox_render_view& view, Camera& camera) {
  check_angles(view);
  const SineCosine a = sine_cosine(view.azimuth), e = sine_cosine(view.elevation), r = sine_cosine(view.roll);
  // To the viewer and its derivative by elevation, with x to the patient's left, y to the back, z up.
  const Vec3 to_viewer = {{e.cosine * a.sine, -(e.cosine * a.cosine), e.sine}};
  const Vec3 up = {{-(e.sine * a.sine), e.sine * a.cosine, e.cosine}};
  camera.forward = to_viewer * -1.0;
  const Vec3 right = cross(camera.forward, up);
  camera.up = up * r.cosine + right * r.sine;
  camera.right = right * r.cosine - up * r.sine;
}

void look_by_orientation(const zox_render_view& view, Camera& camera) {
  const Vec3 axes[3] = {vec3(view.orientation[0]), vec3(view.orientation[1]), vec3(view.orientation[2])};
  for (int a = 0; a < 3; ++a) {
    const bool is_unit = std::abs(dot(axes[a], axes[a]) - 1) <= kUnitTolerance;
    require(is_unit && std::abs(dot(axes[a], axes[(a + 1) % 3])) <= kUnitTolerance,
            "The orientation must be three unit vectors, each perpendicular to the others.");
  }
  camera.right = axes[0];
  camera.up = axes[1];
  camera.forward = axes[2];
}

// Millimetres a pixel so that the volume's box just fits. In perspective a corner at r to the right, u up and
// f behind the middle is seen at r * d / (d + f), where the distance d is `ratio` pixels; it must not lie
// beyond half of the picture.
double fitting_pixel_size(const Camera& camera, const Frame& frame, double ratio) {
  const Vec3 middle = frame.middle();
  double pixel = 0;
  for (int corner = 0; corner < 8; ++corner) {
    const Vec3 voxels = {{corner & 1 ? frame.size[0] - 0.5 : -0.5, corner & 2 ? frame.size[1] - 0.5 : -0.5,
                          corner & 4 ? frame.outer_high() : frame.outer_low()}};
    const Vec3 point = to_millimetres(frame.axes, voxels - middle);
    const double reach = 2 * std::max(std::abs(dot(point, camera.right)) / camera.width,
                                      std::abs(dot(point, camera.up)) / camera.height);
    pixel = std::max(pixel, camera.perspective ? reach - dot(point, camera.forward) / ratio : reach);
  }
  return pixel;
}

void check_lens(const zox_render_view& view) {
  require(view.width >= 1 && view.width <= 8192 && view.height >= 1 && view.height <= 8192,
          "The picture must be 1 to 8192 pixels wide and high.");
  require(view.projection == ZOX_RENDER_PERSPECTIVE || view.projection == ZOX_RENDER_ORTHOGRAPHIC,
          "The projection is none of the projections.");
  require(view.field_of_view >= 1 && view.field_of_view <= 120, "field_of_view must be 1 to 120 degrees.");
  require(view.zoom >= 1e-6 && view.zoom <= 1e6, "zoom must be 1e-6 to 1e6.");
  require(view.pixel_size >= 0 && view.pixel_size <= 1e9, "pixel_size must be 0 to 1e9 millimetres.");
  require(view.pixel_size == 0 || view.pixel_size >= 1e-12,
          "pixel_size must not be below 1e-12 millimetres.");
  require(view.step >= 0.05 && view.step <= 64, "step must be 0.05 to 64.");
  for (const double c : view.center)
    require(!view.use_center || std::abs(c) <= 1e12,
            "The center must be finite and within 1e12 millimetres.");
}

// What the camera itself does not need: a view is checked whole, whatever is asked of it.
void check_samples(const zox_render_view& view) {
  require(view.interpolation == ZOX_RENDER_TRILINEAR || view.interpolation == ZOX_RENDER_NEAREST,
          "The interpolation is none of the interpolations.");
  require(view.reduction >= ZOX_RENDER_MAXIMUM && view.reduction <= ZOX_RENDER_LARGEST_MAGNITUDE,
          "The reduction is none of the reductions.");
  require(view.slab_near <= view.slab_far, "slab_near must not be above slab_far.");
  require(std::isfinite(view.window_center), "window_center must be finite.");
  require(view.window_width >= 0 && std::isfinite(view.window_width),
          "window_width must be finite and not below 0.");
  require((view.skip | 1) == 1 && (view.use_orientation | 1) == 1 && (view.use_center | 1) == 1,
          "skip, use_orientation and use_center must be 0 or 1.");
}

}  // namespace

SineCosine sine_cosine(double degrees) {
  const double quarters = std::floor(degrees / 90 + 0.5);
  const double x = (degrees - quarters * 90) * (std::numbers::pi / 180);  // within an eighth of a turn
  double sine = x, cosine = 1, s = x, c = 1;
  for (int n = 1; n <= 11; ++n) {
    c *= -x * x / ((2 * n - 1) * (2 * n));
    s *= -x * x / ((2 * n) * (2 * n + 1));
    cosine += c;
    sine += s;
  }
  switch (static_cast<int64_t>(quarters) & 3) {
    case 0:
      return {sine, cosine};
    case 1:
      return {cosine, -sine};
    case 2:
      return {-sine, -cosine};
    default:
      return {-cosine, sine};
  }
}

Camera make_camera(const zox_render_view& view, const Frame& frame) {
  check_lens(view);
  check_samples(view);
  Camera camera;
  camera.perspective = view.projection == ZOX_RENDER_PERSPECTIVE;
  camera.width = view.width;
  camera.height = view.height;
  view.use_orientation ? look_by_orientation(view, camera) : look_by_angles(view, camera);
  const SineCosine half_field = sine_cosine(view.field_of_view / 2);
  const double ratio = std::max(view.width, view.height) * half_field.cosine / (2 * half_field.sine);
  camera.pixel_size =
      view.pixel_size > 0 ? view.pixel_size : fitting_pixel_size(camera, frame, ratio) / view.zoom;
  camera.center = view.use_center ? vec3(view.center) : frame.point(frame.middle());
  camera.eye_distance = camera.perspective ? ratio * camera.pixel_size : 0;
  camera.step = view.step * frame.smallest_spacing();
  return camera;
}

}  // namespace render
