// Which voxel every sample of a batch reads, so that the tests can build a volume that just holds them.
#pragma once

#include <cstdint>
#include <vector>

#include "operation_list.h"

namespace zox_test {

// The voxel of a nearest sample, the lowest of the eight of a trilinear one. In a slice stack z is
// the slice's number; on the way of the one-region nearest casters it counts from slice 0.
struct Voxel {
  int32_t x, y, z;
};

// The voxels of each ray, one for each of its samples, as the reference finds them.
std::vector<std::vector<Voxel>> trace(const Caster& caster, const zox_Volume& volume, const zox_Rays& rays);

// Does a parallel nearest caster of slice stacks take its one-region path?
bool takes_one_region_path(const Caster& caster, const zox_Volume& volume, const zox_Rays& rays);

}  // namespace zox_test
