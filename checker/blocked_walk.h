// Where the blocked operations sample: each operation's own arithmetic, compactly.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "caster.h"

namespace zox_check {

using Point = std::array<double, 3>;  // x, y, z

class BlockedWalk {
 public:
  BlockedWalk(const Caster& caster, const zox_Rays& rays) : caster_(caster), rays_(rays) {
    fixed_ = caster.blocked_rules->positions == zox::Positions::kFixed;
    bias_ = caster.blocked_rules->start_half * 0.5;
  }

  bool fixed() const { return fixed_; }
  double bias() const { return bias_; }

  // Calls visit(ray, sample, position) for every sample; the position in voxels, with the half that
  // nearest sampling adds.
  template <class Visit>
  void walk(Visit visit) const {
    if (caster_.parallel() && rays_.nrays <= zox::kMostSharedRays && along_step()) {
      sample_by_sample(visit);
    } else {
      ray_by_ray(visit);
    }
  }

 private:
  static constexpr double kScale = 1048576.0;  // 20 fraction bits

  double unit() const { return fixed_ ? kScale : 1.0; }
  double scaled(double value) const { return fixed_ ? std::trunc(value * kScale) : value; }
  double start(int ray, int axis) const { return scaled(rays_.starts[ray][axis] + bias_); }
  double step(int ray, int axis) const { return scaled(rays_.steps[caster_.parallel() ? 0 : ray][axis]); }

  // Of ray r's start from ray 0's.
  double offset(int ray, int axis) const {
    const double start = rays_.starts[ray][axis];
    const double start0 = rays_.starts[0][axis];
    return fixed_ ? converted(start * kScale - converted(start0 * kScale)) : start - start0;
  }

  // As the processor converts to 32 bits: what does not fit becomes the smallest integer.
  static double converted(double value) {
    const double whole = std::trunc(value);
    return fits_fixed(whole) ? whole : INT32_MIN;
  }

  // In fixed point a difference wraps in 32 bits, and the smallest integer has no opposite.
  double distance(int ray, int axis) const {
    const double apart = offset(ray, axis) - offset(ray - 1, axis);
    if (!fixed_) return std::fabs(apart);
    const double wrapped = apart - 4294967296.0 * std::floor((apart + 2147483648.0) / 4294967296.0);
    return wrapped == INT32_MIN ? wrapped : std::fabs(wrapped);
  }

  // Is one step longer than the mean spacing of the rays? x counts less than y, y less than z.
  bool along_step() const {
    const double weight[3] = {double(caster_.blocked_rules->x_weight), 6.0, 1.0};
    double longest_step = 0;
    double widest_spacing = 0;
    for (int axis = 0; axis < 3; ++axis) {
      longest_step = std::max(longest_step, std::fabs(rays_.steps[0][axis]) / weight[axis]);
      if (rays_.nrays < 2) continue;
      double sum = 0;
      for (int r = 1; r < rays_.nrays; ++r) {
        sum += distance(r, axis) * (1.0 / unit());
      }
      widest_spacing = std::max(widest_spacing, sum / (rays_.nrays - 1) / weight[axis]);
    }
    return longest_step > widest_spacing;
  }

  template <class Visit>
  void ray_by_ray(Visit visit) const {
    for (int r = 0; r < rays_.nrays; ++r) {
      Point p = {start(r, 0), start(r, 1), start(r, 2)};
      for (int k = 0; k < rays_.nsamples[r]; ++k) {
        visit(r, k, Point{p[0] / unit(), p[1] / unit(), p[2] / unit()});
        for (int axis = 0; axis < 3; ++axis) p[axis] += step(r, axis);
      }
    }
  }

  template <class Visit>
  void sample_by_sample(Visit visit) const {
    const int largest = *std::max_element(rays_.nsamples, rays_.nsamples + rays_.nrays);
    std::vector<Point> offsets;
    for (int r = 0; r < rays_.nrays; ++r) offsets.push_back({offset(r, 0), offset(r, 1), offset(r, 2)});
    Point base = {start(0, 0), start(0, 1), start(0, 2)};
    for (int k = 0; k < largest; ++k) {
      for (int r = 0; r < rays_.nrays; ++r) {
        if (rays_.nsamples[r] <= k) continue;
        const Point& o = offsets[r];
        visit(r, k, Point{(o[0] + base[0]) / unit(), (o[1] + base[1]) / unit(), (o[2] + base[2]) / unit()});
      }
      for (int axis = 0; axis < 3; ++axis) base[axis] += step(0, axis);
    }
  }

  const Caster& caster_;
  const zox_Rays& rays_;
  bool fixed_;
  double bias_;
};

}  // namespace zox_check
