#include "regions.h"

#include <cmath>

namespace zox_test {
namespace {

int draw_region_count(const Caster& caster, Random& random) {
  if (random.chance(0.35)) return 1;
  if (random.chance(0.97)) return random.whole(2, 6);
  return caster.fixed_tables() ? random.pick({511, random.whole(7, 511)})
                               : random.pick({511, 512, random.whole(7, 600)});
}

double draw_width(int count, bool strict, Random& random) {
  if (count > 6) return random.pick({0.25, 1.0, random.real(0.01, 1.0)});
  if (!strict && random.chance(0.03)) return 0.0;
  return random.pick({1.0, 10.0, 2.75, random.real(0.001, 1), random.real(1, 12), random.real(1, 12)});
}

double draw_scale(Random& random) {
  return random.pick({1.0, 1.0, 0.5, 2.0, random.real(0.05, 0.5), random.real(0.5, 3), random.real(0.5, 3)});
}

// Regions deeper than the fixed point counts: distances in them wrap.
Regions draw_deep_regions(const Caster& caster, Random& random) {
  const double limit = caster.trilinear() ? 2047 : 1023;
  Regions regions;
  regions.bounds = {-limit * random.real(0.6, 1), -limit * random.real(0, 0.55), limit * random.real(0.6, 1)};
  if (random.chance(0.3)) regions.bounds.push_back(limit);
  int32_t slice = random.whole(0, 120);
  for (size_t j = 0; j + 1 < regions.bounds.size(); ++j) {
    regions.scales.push_back(random.real(0.002, 0.05));
    regions.slices.push_back(slice);
    slice += static_cast<int32_t>((regions.bounds[j + 1] - regions.bounds[j]) * regions.scales[j] + 1);
  }
  return regions;
}

}  // namespace

Regions draw_regions(const Caster& caster, bool strict, Random& random) {
  if (!strict && random.chance(0.04)) return draw_deep_regions(caster, random);
  Regions regions;
  const int count = draw_region_count(caster, random);
  // In order, as the slices of one scan; or any slice after any other.
  const bool in_order = random.chance(0.7);
  // By one slice: the next region begins before the last slice of the one below.
  const bool overlapping = random.chance(0.15);
  const bool odd_scales = random.chance(0.15);
  const int first = random.pick({0, 0, 0, random.whole(0, 3)});
  double bound =
      random.pick({0.0, 0.0, -0.5, random.real(-50, 50), static_cast<double>(random.whole(-50, 50))});
  double slice = first;
  for (int j = 0; j < count; ++j) {
    const double width = draw_width(count, strict, random);
    double scale = draw_scale(random);
    if (odd_scales && random.chance(0.4))
      scale = random.pick({0.0, -scale, -0.01, strict ? 1.0 : random.real(50, 2000)});
    regions.bounds.push_back(bound);
    regions.scales.push_back(scale);
    regions.slices.push_back(in_order ? static_cast<int32_t>(slice) : random.whole(0, 30));
    bound += width;
    slice += std::floor(width * std::fabs(scale) + 0.5);
    if (overlapping) slice -= 1;
  }
  regions.bounds.push_back(bound);
  return regions;
}

}  // namespace zox_test
