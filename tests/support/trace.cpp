#include "trace.h"

#include <algorithm>

#include "arithmetic.h"
#include "reference.h"

namespace zox_test {

std::vector<std::vector<Voxel>> trace(const Caster& caster, const zox_Volume& volume, const zox_Rays& rays) {
  std::vector<reference::Place> places;
  reference::noted_places = &places;
  caster.reference(&volume, &rays);
  reference::noted_places = nullptr;
  std::vector<std::vector<Voxel>> paths(static_cast<size_t>(std::max(0, rays.nrays)));
  for (const reference::Place& at : places) paths[static_cast<size_t>(at.ray)].push_back({at.x, at.y, at.z});
  return paths;
}

bool takes_one_region_path(const Caster& caster, const zox_Volume& volume, const zox_Rays& rays) {
  return !caster.blocked() && caster.parallel() && !caster.trilinear() &&
         reference::takes_one_region_path(volume, rays);
}

}  // namespace zox_test
