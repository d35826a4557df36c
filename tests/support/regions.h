// The z regions of a slice stack, and random ones, drawn before their slices are known.
#pragma once

#include <vector>

#include "operation_list.h"
#include "random.h"

namespace zox_test {

struct Regions {
  std::vector<double> bounds;  // one more than the others
  std::vector<int32_t> slices;
  std::vector<double> scales;

  int count() const { return static_cast<int>(scales.size()); }

  // Points the record at these arrays, which must outlive it.
  void put_into(zox_Volume& volume) const {
    volume.nregions = count();
    volume.regslice = slices.data();
    volume.regbounds = bounds.data();
    volume.regscale = scales.data();
  }
};

Regions draw_regions(const Caster& caster, bool strict, Random& random);

}  // namespace zox_test
