#include "records.h"

#include <algorithm>

namespace zox_check {
namespace {

bool check_ray_pointers(Report& report, const Caster& caster, const zox_Rays& rays) {
  bool good = true;
  for (int r = 0; r < rays.nrays; ++r) {
    if (!rays.starts[r]) {
      report.say({r}, "its start point is null");
      good = false;
    }
    // Parallel operations have a step for ray 0 only.
    if ((r == 0 || !caster.parallel()) && !rays.steps[r]) {
      report.say({r}, "its step vector is null");
      good = false;
    }
  }
  return good;
}

// Who takes a negative count for 0, and who must not get one.
bool negative_counts_allowed(const Caster& caster) {
  return !caster.parallel() || (caster.general() && caster.trilinear());
}

bool check_sample_counts(Report& report, const Caster& caster, const zox_Rays& rays) {
  bool good = true;
  for (int r = 0; r < rays.nrays && !negative_counts_allowed(caster); ++r) {
    if (rays.nsamples[r] >= 0) continue;
    report.say({r}, "its sample count is %d, but must not be negative", rays.nsamples[r]);
    good = false;
  }
  const int most = caster.trilinear() ? ZOX_MAX_GENERAL_TRILINEAR_SAMPLES : ZOX_MAX_GENERAL_NEAREST_SAMPLES;
  const int largest = caster.general() ? largest_count(rays, rays.nrays) : 0;
  if (largest > most) {
    report.say({}, "the largest sample count is %d, but this operation takes at most %d", largest, most);
    good = false;
  }
  return good;
}

// What is still read when there are no rays.
void check_empty_batch(Report& report, const Caster& caster, const zox_Rays& rays) {
  if (!caster.general() || (caster.parallel() && !caster.trilinear())) return;
  present(report, rays.nsamples, "nsamples");
  if (caster.parallel() && present(report, rays.steps, "steps")) present(report, rays.steps[0], "steps[0]");
}

bool check_regions(Report& report, const zox_Volume& volume) {
  for (int j = 0; j < volume.nregions; ++j) {
    // Not less or equal: a boundary that is not a number is caught too.
    if (volume.regbounds[j] <= volume.regbounds[j + 1]) continue;
    report.say({}, "regbounds[%d] = %g and regbounds[%d] = %g do not ascend", j, volume.regbounds[j], j + 1,
               volume.regbounds[j + 1]);
    return false;
  }
  return true;
}

bool check_stack(Report& report, const zox_Volume& volume) {
  bool good = present(report, volume.slices, "slices") & present(report, volume.rowoffs, "rowoffs") &
              present(report, volume.regbounds, "regbounds") & present(report, volume.regscale, "regscale");
  if (volume.nregions < 1) {
    report.say({}, "nregions is %d, but a volume has at least one region", volume.nregions);
    good = false;
  }
  return good && check_regions(report, volume);
}

}  // namespace

bool present(Report& report, const void* pointer, const char* name) {
  if (!pointer) report.say({}, "%s is null", name);
  return pointer != nullptr;
}

bool aligned(const void* pointer, int element_size) {
  return reinterpret_cast<std::uintptr_t>(pointer) % element_size == 0;
}

int largest_count(const zox_Rays& rays, int nrays) {
  int largest = 0;
  for (int r = 0; r < nrays; ++r) largest = std::max(largest, rays.nsamples[r]);
  return largest;
}

bool check_planes(Report& report, const zox_Rays& rays, int planes, int element_size) {
  if (planes < 1) return true;
  if (!present(report, rays.planes, "planes")) return false;
  bool good = true;
  for (int k = 0; k < planes; ++k) {
    if (!rays.planes[k]) {
      report.say({-1, k}, "planes[%d] is null, but the largest sample count is %d", k, planes);
      good = false;
    } else if (!aligned(rays.planes[k], element_size)) {
      report.say({-1, k}, "planes[%d] is not aligned to its 16-bit elements", k);
    }
  }
  return good;
}

bool check_ray_record(Report& report, const Caster& caster, const zox_Rays* rays) {
  if (!present(report, rays, "the ray batch record")) return false;
  if (rays->nrays < 1) {
    check_empty_batch(report, caster, *rays);
    return false;
  }
  if (caster.general() && rays->nrays > ZOX_MAX_GENERAL_RAYS) {
    report.say({}, "nrays is %d, but this operation takes at most %d rays", rays->nrays,
               ZOX_MAX_GENERAL_RAYS);
    return false;
  }
  const bool arrays = present(report, rays->starts, "starts") & present(report, rays->steps, "steps") &
                      present(report, rays->nsamples, "nsamples");
  if (!arrays) return false;
  const bool good = check_ray_pointers(report, caster, *rays) & check_sample_counts(report, caster, *rays);
  return good && check_planes(report, *rays, largest_count(*rays, rays->nrays), caster.element_size());
}

bool check_volume_record(Report& report, const Caster& caster, const zox_Volume* volume) {
  if (!present(report, volume, "the volume record")) return false;
  if (caster.general()) return check_stack(report, *volume);
  bool good = present(report, volume->data, "data");
  if (!aligned(volume->data, caster.element_size())) report.say({}, "data is not aligned to 16-bit voxels");
  if (volume->size < 1 || volume->size > ZOX_MAX_BLOCKED_SIZE) {
    report.say({}, "size is %d, but must be 1 to %d", volume->size, ZOX_MAX_BLOCKED_SIZE);
    good = false;
  }
  return good;
}

}  // namespace zox_check
