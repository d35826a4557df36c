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

// The voxels of ray `ray`, one for each of its samples. Where a blocked parallel caster may walk in
// either of two ways, the ways differ in the last bit of a position at most, and `second_way` asks
// for the one that adds the rays' offsets to a running position.
std::vector<Voxel> trace(const Caster& caster, const zox_Volume& volume, const zox_Rays& rays, int ray,
                         bool second_way = false);

// Does a parallel nearest caster of slice stacks take its one-region path?
bool takes_one_region_path(const Caster& caster, const zox_Volume& volume, const zox_Rays& rays);

}  // namespace zox_test
