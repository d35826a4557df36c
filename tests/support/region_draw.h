// Random z regions of a slice stack, before its slices are known.
#pragma once

#include <vector>

#include "operation_list.h"
#include "random.h"

namespace zox_test {

struct Regions {
  std::vector<double> bounds;  // one more than the others
  std::vector<double> scales;
  std::vector<int32_t> slices;

  int count() const { return static_cast<int>(scales.size()); }
};

Regions draw_regions(const Caster& caster, bool strict, Random& random);

}  // namespace zox_test
