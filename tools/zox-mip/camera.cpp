#include "camera.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zox_mip {
namespace {

// The longer side of a perspective picture spans 30 degrees.
const double kHalfFieldTangent = std::tan(15 * std::numbers::pi / 180);

struct SineCosine {
  double sine;
  double cosine;
};

// Exact at right angles, so that views along the axes have steps along the axes.
SineCosine sine_cosine(double degrees) {
  const double radians = degrees * std::numbers::pi / 180;
  if (std::fmod(degrees, 90) == 0) return {std::round(std::sin(radians)), std::round(std::cos(radians))};
  return {std::sin(radians), std::cos(radians)};
}

}  // namespace

Camera::Camera(const View& view, Projection projection, int width, int height, const Axes& axes,
               const Vec3& box)
    : projection_(projection), width_(width), height_(height) {
  const SineCosine a = sine_cosine(view.azimuth);
  const SineCosine e = sine_cosine(view.elevation);
  // To the viewer and its derivative by elevation, with x to the patient's left, y to the back, z up.
  const Vec3 to_viewer = {e.cosine * a.sine, -e.cosine * a.cosine, e.sine};
  forward_ = to_viewer * -1.0;
  up_ = {-e.sine * a.sine, e.sine * a.cosine, e.cosine};
  right_ = cross(forward_, up_);

  // A corner at r to the right, u up and f behind the middle is seen at r * d / (d + f), where the
  // distance d is `ratio` pitches; it must not lie beyond half the picture.
  const double ratio = std::max(width, height) / (2 * kHalfFieldTangent);
  for (int corner = 0; corner < 8; ++corner) {
    const Vec3 voxels = {corner & 1 ? box[0] / 2 : -box[0] / 2, corner & 2 ? box[1] / 2 : -box[1] / 2,
                         corner & 4 ? box[2] / 2 : -box[2] / 2};
    const Vec3 point = to_millimetres(axes, voxels);
    const double reach =
        2 * std::max(std::abs(dot(point, right_)) / width, std::abs(dot(point, up_)) / height);
    const double nearer = projection == Projection::kPerspective ? dot(point, forward_) / ratio : 0;
    pitch_ = std::max(pitch_, reach - nearer);
  }
  distance_ = ratio * pitch_;
}

Ray Camera::ray(int column, int row) const {
  const Vec3 across = right_ * ((column + 0.5 - width_ / 2.0) * pitch_);
  const Vec3 offset = across + up_ * ((height_ / 2.0 - row - 0.5) * pitch_);
  if (projection_ == Projection::kOrthographic) return {offset, forward_};
  const Vec3 from_eye = forward_ * distance_ + offset;
  const Vec3 direction = from_eye * (1 / length(from_eye));
  return {forward_ * -distance_ + direction * distance_, direction};
}

}  // namespace zox_mip
