// The rays of a batch, and random ones through a given room, before any is cut to fit.
#pragma once

#include <array>
#include <vector>

#include "operation_list.h"
#include "random.h"

namespace zox_test {

using Point = std::array<double, 3>;

// The voxel of a nearest sample, the lowest of the eight of a trilinear one. In a slice stack z is
// the slice's number; on the way of the one-region nearest casters it counts from slice 0.
struct Voxel {
  int32_t x, y, z;
};

struct RayList {
  int32_t nrays = 0;
  // One entry at least, also when nrays is 0 or negative; parallel casters need no step but the first.
  std::vector<Point> starts, steps;
  std::vector<int32_t> counts;
  std::vector<const double*> start_pointers, step_pointers;

  int longest() const { return std::max(0, *std::max_element(counts.begin(), counts.end())); }

  // What an operation takes. It points into this list.
  zox_Rays record(void* const* planes);
};

// Where samples may lie. Marks are z values worth starting on: the boundaries of regions.
struct Room {
  Point low;
  Point high;
  std::vector<double> marks;
  double unit;  // one step of the caster's fixed point
  bool strict;  // nothing that merely goes unread, such as an absurd step of a ray of one sample
};

RayList draw_rays(const Caster& caster, const Room& room, Random& random);

}  // namespace zox_test
