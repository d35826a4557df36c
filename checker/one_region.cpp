// The parallel nearest operations on one region whose rays start close together in z: positions of
// ray 0 run in double, the other rays keep their fixed-point distance from it.
#include <algorithm>
#include <cmath>

#include "checks.h"
#include "stack_samples.h"

namespace zox_check {
namespace {

constexpr double kScale = 2097152.0;  // 21 fraction bits
constexpr double kHalf = kScale / 2;

double fixed(double value) { return std::trunc(value * kScale); }

struct Position {
  double x, y, slice;
};

Position offset(const zox_Volume& volume, const zox_Rays& rays, int ray) {
  const double* start = rays.starts[ray];
  const double* start0 = rays.starts[0];
  return {fixed(start[0] - start0[0]) + kHalf, fixed(start[1] - start0[1]) + kHalf,
          fixed((start[2] - start0[2]) * volume.regscale[0]) + kHalf};
}

// The sample's z, to within the rounding of the walk: one unit, and the sums' own.
void check_depth(Report& report, const zox_Volume& volume, const zox_Rays& rays, Where where) {
  const double z = rays.starts[where.ray][2] + where.sample * rays.steps[0][2];
  const double slack = 1 / kScale;
  if (z >= volume.regbounds[0] - slack && z <= volume.regbounds[1] + slack) return;
  report.say(where, "z = %.9g lies outside the volume's regions, %g to %g", z, volume.regbounds[0],
             volume.regbounds[1]);
}

}  // namespace

bool takes_one_region_path(const Caster& caster, const zox_Volume& volume, const zox_Rays& rays) {
  if (!caster.parallel() || caster.trilinear() || volume.nregions != 1) return false;
  double spread = 0;
  for (int r = 0; r < rays.nrays; ++r) {
    const double distance = std::fabs(rays.starts[r][2] - rays.starts[0][2]);
    if (distance > spread) spread = distance;
  }
  return (volume.regbounds[1] - volume.regbounds[0]) * 0.2 > spread;
}

void check_one_region(Report& report, const Caster& caster, const zox_Volume& volume, const zox_Rays& rays) {
  // Not read on this path, where the first slice is 0; the slice lists would start elsewhere.
  if (volume.regslice && volume.regslice[0] != 0) {
    report.say({}, "regslice[0] is %d, but must be 0 on a one-region volume", volume.regslice[0]);
  }
  const StackSampleCheck check(report, caster, volume);
  const double scale = volume.regscale[0];
  const double* start = rays.starts[0];
  const double* step = rays.steps[0];
  const int largest = *std::max_element(rays.nsamples, rays.nsamples + rays.nrays);
  double x = start[0];
  double y = start[1];
  double slice = scale * (start[2] - volume.regbounds[0]);
  for (int k = 0; k < largest; ++k) {
    // All rays share ray 0's position, also beyond ray 0's own samples.
    const Position base = {fixed(x), fixed(y), fixed(slice)};
    const bool fits = check.fixed({0, k}, "x", base.x, kScale) & check.fixed({0, k}, "y", base.y, kScale) &
                      check.fixed({0, k}, "slice position", base.slice, kScale);
    if (!fits) return;
    for (int r = 0; r < rays.nrays; ++r) {
      if (rays.nsamples[r] <= k) continue;
      const Where where = {r, k};
      const Position o = offset(volume, rays, r);
      if (!(check.fixed(where, "x", o.x + base.x, kScale) & check.fixed(where, "y", o.y + base.y, kScale) &
            check.fixed(where, "slice position", o.slice + base.slice, kScale))) {
        continue;
      }
      check_depth(report, volume, rays, where);
      check.voxel(where, std::floor((o.x + base.x) / kScale), std::floor((o.y + base.y) / kScale),
                  std::floor((o.slice + base.slice) / kScale));
    }
    x += step[0];
    y += step[1];
    slice += step[2] * scale;
  }
}

}  // namespace zox_check
