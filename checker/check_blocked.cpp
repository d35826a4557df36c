#include <zox_volume_layout.h>

#include <algorithm>

#include "blocked_walk.h"
#include "checks.h"
#include "registry.h"

namespace zox_check {
namespace {

// Columns and rows that the bricks of a volume hold: its size rounded down to a power of two, 64 at least.
int edge_of(const zox_Volume& volume) {
  int edge = 64;
  while (edge <= volume.size / 2) edge *= 2;
  return edge;
}

// Layers that an element index of 32 bits reaches, brick by brick.
int most_layers(int edge) {
  constexpr int kLayersOfBrick = 32;
  return kLayersOfBrick * static_cast<int>((uint64_t{1} << 32) / zox_blocked_elements(edge, kLayersOfBrick));
}

// Positions along an axis lie in 0 <= p < end, the half of nearest sampling included.
Point position_ends(const Caster& caster, const zox_Volume& volume, bool fixed) {
  const int depth = std::min(most_layers(edge_of(volume)), registered_bounds(volume.data).depth);
  const double wide = edge_of(volume) - caster.reach();
  const double deep = depth - caster.reach();
  return {wide, wide, fixed ? std::min<double>(deep, ZOX_MAX_BLOCKED_FIXED_COORDINATE) : deep};
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
  const int layers = static_cast<int>(deepest) + caster.reach() + 1;
  return zox_blocked_elements(edge_of(volume), layers) * caster.element_size();
}

}  // namespace zox_check
