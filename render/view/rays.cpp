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

// How far, in millimetres, the picture's pixels lie from its middle.
struct Offsets {
  Lanes<double> right, up;
};

// One axis of the voxels: where the picture's middle lies, and what a millimetre to each side means.
struct AxisOfView {
  double center, right, up, forward;
};

// The axis comes by value, and what is written is nothing that is read: else no compiler makes vectors of it.
RENDER_IN_LANES void place_parallel(const Offsets& __restrict offsets, AxisOfView axis, double step,
                                    Lanes<double>& __restrict middles, Lanes<double>& __restrict steps) {
  for (size_t i = 0; i < kLanes; ++i) {
    middles[i] = to_whole((axis.center + axis.right * offsets.right[i] + axis.up * offsets.up[i]) * kGrid);
    steps[i] = to_whole(axis.forward * step * kGrid);
  }
}

RENDER_IN_LANES void find_inverse_lengths(const Offsets& offsets, double eye_distance,
                                          Lanes<double>& inverse) {
  for (size_t i = 0; i < kLanes; ++i) {
    const double a = offsets.right[i], b = offsets.up[i];
    inverse[i] = 1 / std::sqrt(a * a + b * b + eye_distance * eye_distance);
  }
}

RENDER_IN_LANES void place_diverging(const Offsets& __restrict offsets,
                                     const Lanes<double>& __restrict inverse, AxisOfView axis,
                                     double eye_distance, double reach, double step,
                                     Lanes<double>& __restrict middles, Lanes<double>& __restrict steps) {
  const double eye = axis.center - axis.forward * eye_distance;
  for (size_t i = 0; i < kLanes; ++i) {
    const double direction =
        (axis.forward * eye_distance + axis.right * offsets.right[i] + axis.up * offsets.up[i]) * inverse[i];
    middles[i] = to_whole((eye + direction * reach) * kGrid);
    steps[i] = to_whole(direction * step * kGrid);
  }
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
void Rays::lines(const Lanes<double>& columns, const Lanes<double>& rows, LineLanes& lines) const {
  alignas(64) Offsets offsets;
  for (size_t i = 0; i < kLanes; ++i) {
    offsets.right[i] = (columns[i] + 0.5 - half_width_) * pixel_;
    offsets.up[i] = (half_height_ - rows[i] - 0.5) * pixel_;
  }
  alignas(64) Lanes<double> inverse;
  if (perspective_) find_inverse_lengths(offsets, eye_distance_, inverse);
  for (int a = 0; a < 3; ++a) {
    const AxisOfView axis{center_[a], right_[a], up_[a], forward_[a]};
    Lanes<double>&middles = lines.middle[static_cast<size_t>(a)], &steps = lines.step[static_cast<size_t>(a)];
    if (perspective_)
      place_diverging(offsets, inverse, axis, eye_distance_, reach_, step_, middles, steps);
    else
      place_parallel(offsets, axis, step_, middles, steps);
  }
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
