// Where the slice-list operations sample: rounding of starts, steps and boundaries by operation,
// and the walk from region to region. Positions are whole numbers of fixed-point units.
#pragma once

#include <cmath>
#include <vector>

#include "caster.h"

namespace zox_check {

struct StackRules {
  StackRules(const zox::GeneralRules& rules, bool one_region)
      : scale(1 << rules.bits),
        bias(rules.start_half * 0.5),
        xy_start(rules.xy_start),
        xy_step(one_region ? rules.step_one : rules.step_many),
        z(rules.z),
        bounds(rules.bounds) {}

  double fixed(double value, zox::Rounding rounding) const {
    return std::trunc(value * scale + (rounding == zox::Rounding::kRounded ? 0.5 : 0.0));
  }

  double scale;
  double bias;  // added to x and y of the start
  zox::Rounding xy_start, xy_step;
  zox::Rounding z;  // start and step
  zox::Rounding bounds;
};

struct StackSample {
  double x, y, z;  // z in the volume's own units, not mapped
  double slice;    // position in slices from the region's first
  int region;
};

class StackWalk {
 public:
  StackWalk(const Caster& caster, const zox_Volume& volume)
      : volume_(volume), rules_(*caster.general_rules, volume.nregions == 1) {
    for (int j = 0; j <= volume.nregions; ++j) {
      bounds_.push_back(rules_.fixed(volume.regbounds[j], rules_.bounds));
    }
  }

  const StackRules& rules() const { return rules_; }
  const std::vector<double>& bounds() const { return bounds_; }

  // Calls visit(sample number, sample) for each sample of one ray until it returns false.
  template <class Visit>
  void walk(const double* start, const double* step, int nsamples, Visit visit) const {
    const double dx = rules_.fixed(step[0], rules_.xy_step);
    const double dy = rules_.fixed(step[1], rules_.xy_step);
    const double dz = rules_.fixed(step[2], rules_.z);
    // A step beyond the fixed point's range converts to the most negative integer.
    const bool rising = dz >= 1 && fits_fixed(dz);
    StackSample s = {rules_.fixed(start[0] + rules_.bias, rules_.xy_start),
                     rules_.fixed(start[1] + rules_.bias, rules_.xy_start), rules_.fixed(start[2], rules_.z),
                     0, rising ? 0 : volume_.nregions - 1};
    s.slice = slice_position(s);
    double slice_step = std::trunc(dz * volume_.regscale[s.region]);
    for (int k = 0; k < nsamples; ++k) {
      const int region = volume_.nregions == 1 ? 0 : region_of(s, rising);
      if (region != s.region) {
        s.region = region;
        s.slice = slice_position(s);
        slice_step = std::trunc(dz * volume_.regscale[region]);
      }
      if (!visit(k, s)) return;
      s.x += dx;
      s.y += dy;
      s.z += dz;
      s.slice += slice_step;
    }
  }

 private:
  double slice_position(const StackSample& s) const {
    return std::trunc((s.z - bounds_[s.region]) * volume_.regscale[s.region]);
  }

  // Stays inside the table where the sample has left the volume.
  int region_of(const StackSample& s, bool rising) const {
    int j = s.region;
    if (rising) {
      while (j + 1 < volume_.nregions && bounds_[j + 1] < s.z) ++j;
    } else {
      while (j > 0 && s.z < bounds_[j]) --j;
    }
    return j;
  }

  const zox_Volume& volume_;
  const StackRules rules_;
  std::vector<double> bounds_;
};

}  // namespace zox_check
