#include <algorithm>

#include "checks.h"
#include "overlap.h"
#include "records.h"

namespace zox_check {

void check_caster(const Caster& caster, const zox_Volume* volume, const zox_Rays* rays) {
  Report report(caster.name);
  const bool volume_good = check_volume_record(report, caster, volume);
  const bool rays_good = check_ray_record(report, caster, rays);
  if (!volume_good || !rays_good) return;

  const int planes = largest_count(*rays, rays->nrays);
  Ranges read;
  read.add_batch(*rays, rays->nrays, planes);
  read.add_paths(*rays, caster.parallel());
  if (caster.general()) {
    read.add_stack(*volume);
    check_stack_positions(report, caster, *volume, *rays);
  } else {
    read.add(volume, sizeof *volume, "the volume record");
    read.add(volume->data, check_blocked_positions(report, caster, *volume, *rays), "the voxels");
  }
  check_plane_overlaps(report, *rays, planes, std::size_t{1} * rays->nrays * caster.element_size(), read);
}

}  // namespace zox_check
