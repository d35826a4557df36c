#include <algorithm>

#include "blocked_walk.h"
#include "checks.h"
#include "registry.h"

namespace zox_check {
namespace {

int bricks_in_row(const zox_Volume& volume) {
  int bricks = 1;
  for (int n = volume.size >> 7; n > 0; n >>= 1) bricks *= 2;
  return bricks;
}

// Positions along an axis lie in 0 <= p < end, the half of nearest sampling included.
Point position_ends(const Caster& caster, const zox_Volume& volume, bool fixed) {
  const int bricks = bricks_in_row(volume);
  // The element index has 32 bits; a brick takes 17 of them.
  const int layers = 32 * ((1 << 15) / (bricks * bricks));
  const int depth = std::min(layers, registered_bounds(volume.data).depth);
  const double edge = 64.0 * bricks - caster.reach();
  const double deep = depth - caster.reach();
  return {edge, edge, fixed ? std::min(deep, 2048.0) : deep};
}

}  // namespace

std::size_t check_blocked_positions(Report& report, const Caster& caster, const zox_Volume& volume,
                                    const zox_Rays& rays) {
  const BlockedWalk walk(caster, rays);
  const Point ends = position_ends(caster, volume, walk.fixed());
  const double bias = walk.bias();
  double deepest = -1;
  walk.walk([&](int ray, int sample, const Point& p) {
    deepest = std::max(deepest, p[2]);
    for (int axis = 0; axis < 3; ++axis) {
      if (p[axis] >= 0 && p[axis] < ends[axis]) continue;
      const char name = "xyz"[axis];
      report.say({ray, sample}, "%c = %.9g, but this operation samples the volume at %g <= %c < %g", name,
                 p[axis] - bias, 0 - bias, name, ends[axis] - bias);
    }
  });
  if (!report.clean() || deepest < 0) return 0;
  const std::size_t bricks = bricks_in_row(volume);
  const std::size_t slabs = (static_cast<std::size_t>(deepest) + caster.reach()) / 32 + 1;
  return slabs * bricks * bricks * 131072 * caster.element_size();
}

}  // namespace zox_check
