#include <cmath>

#include "checks.h"
#include "records.h"
#include "stack_samples.h"
#include "stack_walk.h"

namespace zox_check {
namespace {

// These operations have no heap fallback for their tables.
bool check_fixed_tables(Report& report, const Caster& caster, const zox_Volume& volume) {
  if (caster.general_rules->tables == zox::Tables::kGrow) return true;
  bool good = true;
  if (volume.nslices > ZOX_MAX_FIXED_SLICES) {
    report.say({}, "nslices is %d, but this operation takes at most %d slices", volume.nslices,
               ZOX_MAX_FIXED_SLICES);
    good = false;
  }
  if (volume.nregions > ZOX_MAX_FIXED_REGIONS) {
    report.say({}, "nregions is %d, but this operation takes at most %d regions", volume.nregions,
               ZOX_MAX_FIXED_REGIONS);
    good = false;
  }
  return good;
}

bool check_boundaries(Report& report, const StackWalk& walk, int nregions) {
  for (int j = 0; j <= nregions; ++j) {
    if (fits_fixed(walk.bounds()[j])) continue;
    report.say({}, "regbounds[%d] = %g leaves the fixed point's range of %g", j,
               walk.bounds()[j] / walk.rules().scale, 2147483648.0 / walk.rules().scale);
    return false;
  }
  return true;
}

// A sample whose real z is in range can seem outside by the conversions to whole units: by less than
// 1 for the boundary, less than 1.5 for the start (0.5 is added to negative values too, and then cut
// toward zero), and by half a unit for every step.
void check_depth(Report& report, const StackWalk& walk, Where where, double z) {
  const double first = walk.bounds().front();
  const double last = walk.bounds().back();
  const double slack = 2.5 + 0.5 * where.sample;
  if (z >= first - slack && z <= last + slack) return;
  const double scale = walk.rules().scale;
  report.say(where, "z = %.9g lies outside the volume's regions, %g to %g", z / scale, first / scale,
             last / scale);
}

// A step that does not fit becomes the smallest integer, and the samples after the first lie anywhere.
bool check_step(Report& report, const StackWalk& walk, const double* step, Where where) {
  const StackRules& rules = walk.rules();
  for (int axis = 0; axis < 3; ++axis) {
    const double fixed = rules.fixed(step[axis], axis == 2 ? rules.z : rules.xy_step);
    if (fits_fixed(fixed)) continue;
    report.say(where, "the step in %c is %g, outside the fixed point's range of %g", "xyz"[axis], step[axis],
               2147483648.0 / rules.scale);
    return false;
  }
  return true;
}

void check_ray(Report& report, const Caster& caster, const zox_Volume& volume, const zox_Rays& rays,
               const StackWalk& walk, int ray) {
  const StackSampleCheck check(report, caster, volume);
  const double scale = walk.rules().scale;
  const double half = caster.trilinear() ? 0.0 : scale / 2;
  const double* step = rays.steps[caster.parallel() ? 0 : ray];
  if (rays.nsamples[ray] > 1 && !check_step(report, walk, step, {ray, 1})) return;
  walk.walk(rays.starts[ray], step, rays.nsamples[ray], [&](int k, const StackSample& s) {
    const Where where = {ray, k};
    const double distance = s.z - walk.bounds()[s.region];
    if (!(check.fixed(where, "x", s.x, scale) & check.fixed(where, "y", s.y, scale) &
          check.fixed(where, "z", s.z, scale) &
          check.fixed(where, "distance from its region's first boundary", distance, scale) &
          check.fixed(where, "slice position", s.slice + half, scale))) {
      return false;
    }
    check_depth(report, walk, where, s.z);
    check.voxel(where, std::floor(s.x / scale), std::floor(s.y / scale),
                std::floor((s.slice + half) / scale) + volume.regslice[s.region]);
    return true;
  });
}

}  // namespace

void check_stack_positions(Report& report, const Caster& caster, const zox_Volume& volume,
                           const zox_Rays& rays) {
  if (takes_one_region_path(caster, volume, rays)) {
    return check_one_region(report, caster, volume, rays);
  }
  if (!present(report, volume.regslice, "regslice")) return;
  if (!check_fixed_tables(report, caster, volume)) return;
  const StackWalk walk(caster, volume);
  if (!check_boundaries(report, walk, volume.nregions)) return;
  for (int r = 0; r < rays.nrays; ++r) check_ray(report, caster, volume, rays, walk, r);
}

}  // namespace zox_check
