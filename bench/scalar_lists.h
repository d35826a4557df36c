// A second scalar baseline for the general ray casters: every sample is pushed onto the list of its
// slice, then the slices are swept in ascending order. Signatures and results are the library's.
#pragma once

#include "operations/list.h"
#include "zox_volume.h"

namespace lists {

// The parallel nearest ones know the slice lists only: not for volumes of one region.
#define ZOX_BENCH_DECLARE(Name, name, ...) int name(const zox_Volume* volume, const zox_Rays* rays);
ZOX_GENERAL_CASTERS(ZOX_BENCH_DECLARE)
#undef ZOX_BENCH_DECLARE

}  // namespace lists
