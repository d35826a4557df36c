// Starts and steps of parallel rays around the choices that casters make from them.
#pragma once

#include "ray_draw.h"

namespace zox_test {

// The rays' starts on both sides of, and exactly at, the fifth of a region's depth that decides
// between the two ways of the parallel nearest casters of slice stacks.
void spread_to_threshold(const Room& room, DrawnRays& rays, Random& random);

// Parallel blocked casters weigh the step against the rays' spacing, x at a twelfth or a sixth: one of
// the two along x and the other along z, in proportions around both weights. Starts half a unit or
// a last bit below where another voxel begins make the two ways of walking differ.
void spread_around_weights(const Caster& caster, const Room& room, DrawnRays& rays, Random& random);

}  // namespace zox_test
