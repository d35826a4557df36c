#include "view/rays.h"

#include <algorithm>

#include "failure.h"

namespace render {
namespace {

// The first and last n with near <= n * step <= far, as the products compare in doubles.
Stretch between(double near, double far, double step) {
  const double beyond = 2 * kFarSample * step;
  near = std::clamp(near, -beyond, beyond);
  far = std::clamp(far, -beyond, beyond);
  double first = std::max(std::ceil(near / step), -kFarSample),
         last = std::min(std::floor(far / step), kFarSample);
  while ((first - 1) * step >= near && first > -kFarSample) --first;
  while (first * step < near) ++first;
  while ((last + 1) * step <= far && last < kFarSample) ++last;
  while (last * step > far) --last;
  return {first, last};
}

double diagonal(const Frame& frame) {
  double longest = 0;
  for (int corner = 0; corner < 4; ++corner) {
    const Vec3 across = {{double(frame.size[0]), (corner & 1 ? -1.0 : 1.0) * frame.size[1],
                          (corner & 2 ? -1.0 : 1.0) * (frame.outer_high() - frame.outer_low())}};
    longest = std::max(longest, length(to_millimetres(frame.axes, across)));
  }
  return longest;
}

}  // namespace

Rays::Rays(const Camera& camera, const Frame& frame, const zox_render_view& view)
    : perspective_(camera.perspective),
      step_(camera.step),
      pixel_(camera.pixel_size),
      eye_distance_(camera.eye_distance),
      reach_(camera.eye_distance),
      center_(to_voxels(frame.rows, camera.center - frame.origin)),
      right_(to_voxels(frame.rows, camera.right)),
      up_(to_voxels(frame.rows, camera.up)),
      forward_(to_voxels(frame.rows, camera.forward)),
      half_width_(camera.width / 2.0),
      half_height_(camera.height / 2.0) {
  const double away = length(camera.center - frame.point(frame.middle())) + diagonal(frame);
  const double aside = pixel_ * std::max(camera.width, camera.height);
  if ((away + (perspective_ ? aside : 0)) / step_ > kFarSample)
    reject("With this step, center and pixel size a ray would have more than 16777216 samples.");
  for (int a = 0; a < 3; ++a)
    require((std::abs(center_[a]) +
             length(frame.rows[static_cast<size_t>(a)]) * (aside + 2 * eye_distance_)) < 1 << 28,
            "The view lies too far from the volume.");
  take_slab(view, step_);
}

void Rays::take_slab(const zox_render_view& view, double step) {
  if (view.slab_near == view.slab_far && std::isfinite(view.slab_near)) {
    require(std::abs(view.slab_near) <= kFarSample * step, "The slab lies too far from the volume.");
    center_ = center_ + forward_ * (perspective_ ? 0 : view.slab_near);
    reach_ += perspective_ ? view.slab_near : 0;
    number_offset_ = static_cast<int>(std::floor(view.slab_near / step + 0.5));
    depths_ = perspective_ && reach_ < 0 ? Stretch{} : Stretch{0, 0};
    return;
  }
  // Nothing is seen behind the eye.
  const double near = perspective_ ? std::max(view.slab_near, -eye_distance_) : view.slab_near;
  depths_ = between(near, view.slab_far, step);
}

// One axis at a time, since lanes of all three would be more than registers hold.
template <bool kPerspective>
void Rays::fill(const Lanes<double>& columns, const Lanes<double>& rows, LineLanes& lines) const {
  for (int axis = 0; axis < 3; ++axis) {
    Lanes<double>&middles = lines.middle[static_cast<size_t>(axis)],
    &steps = lines.step[static_cast<size_t>(axis)];
    const double center = center_[axis], right = right_[axis], up = up_[axis], forward = forward_[axis];
    for (size_t i = 0; i < kLanes; ++i) {
      const double a = (columns[i] + 0.5 - half_width_) * pixel_, b = (half_height_ - rows[i] - 0.5) * pixel_;
      double middle = center + right * a + up * b, direction = forward;
      if (kPerspective) {
        const double far = std::sqrt(a * a + b * b + eye_distance_ * eye_distance_);
        direction = (forward * eye_distance_ + right * a + up * b) * (1 / far);
        middle = center - forward * eye_distance_ + direction * reach_;
      }
      middles[i] = to_whole(middle * kGrid);
      steps[i] = to_whole(direction * step_ * kGrid);
    }
  }
}

void Rays::lines(const Lanes<double>& columns, const Lanes<double>& rows, LineLanes& lines) const {
  perspective_ ? fill<true>(columns, rows, lines) : fill<false>(columns, rows, lines);
}

Line Rays::line(double column, double row) const {
  Lanes<double> columns{}, rows{};
  columns[0] = column;
  rows[0] = row;
  LineLanes found;
  lines(columns, rows, found);
  return found.of(0);
}

}  // namespace render
