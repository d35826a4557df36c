// Random rays through a given room: their starts, steps and sample counts before any is cut to fit.
#pragma once

#include <array>
#include <vector>

#include "operation_list.h"
#include "random.h"

namespace zox_test {

using Vector = std::array<double, 3>;

// Where samples may lie. Marks are z values worth starting on: the boundaries of regions.
struct Room {
  Vector low;
  Vector high;
  std::vector<double> marks;
  double unit;  // one step of the caster's fixed point
  bool strict;  // nothing that merely goes unread, such as an absurd step of a ray of one sample
};

struct DrawnRays {
  int nrays;
  // One entry at least, also when nrays is 0 or negative.
  std::vector<Vector> starts;
  std::vector<Vector> steps;
  std::vector<int32_t> counts;
};

DrawnRays draw_rays(const Caster& caster, const Room& room, Random& random);

}  // namespace zox_test
