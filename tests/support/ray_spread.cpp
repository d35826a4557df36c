#include "ray_spread.h"

#include <cmath>

namespace zox_test {

void spread_to_threshold(const Room& room, DrawnRays& rays, Random& random) {
  const double threshold = (room.marks[1] - room.marks[0]) * 0.2;
  const double distance = random.pick({threshold, threshold - room.unit, threshold + room.unit,
                                       std::nextafter(threshold, 0.0), threshold * random.real(0, 2)});
  const double base = random.pick({0.0, room.marks[0], rays.starts[0][2]});
  for (size_t r = 0; r < rays.starts.size(); ++r) rays.starts[r][2] = base;
  rays.starts[static_cast<size_t>(random.whole(0, static_cast<int>(rays.starts.size()) - 1))][2] +=
      random.chance(0.5) ? distance : -distance;
}

void spread_around_weights(const Caster& caster, const Room& room, DrawnRays& rays, Random& random) {
  const double ratio = random.pick({1.0 / 12, 1.0 / 6, random.real(1.0 / 14, 1.0 / 5)});
  const size_t wide = random.chance(0.5) ? 0 : 2;
  // In doubles only starts far smaller than their distances lose bits on the one way alone.
  const bool fixed = caster.trilinear() && caster.element_size() == 1;
  const double sign = fixed && random.chance(0.5) ? -1 : 1;
  if (!fixed) rays.starts[0][wide] = random.real(0, 0.5);
  for (size_t r = 1; r < rays.starts.size(); ++r) {
    const double seam =
        std::floor(rays.starts[0][wide]) + sign * static_cast<double>(r) + (caster.trilinear() ? 0.0 : 0.5);
    rays.starts[r] = rays.starts[0];
    rays.starts[r][wide] = fixed ? seam - room.unit / 2 : std::nextafter(seam, 0);
  }
  Vector step{};
  step[2 - wide] = sign * (wide == 0 ? ratio : 1 / ratio);
  rays.steps.assign(rays.steps.size(), step);
}

}  // namespace zox_test
