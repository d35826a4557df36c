// Every kernel of one instruction set. A set's file defines ZOX_SET and includes this; all that follows
// is local to that file.
#include "blocked/blocked_divergent.h"
#include "blocked/blocked_parallel.h"
#include "maximum/maximum.h"
#include "operations/table.h"
#include "stack/one_region.h"
#include "stack/stack_cast.h"
#include "window/window_level.h"

namespace zox::ZOX_SET {
namespace {

// What each row of the list is made by.
#define ZOX_BLOCKED_DIVERGENT(Name, name, rules, ...) .name = cast_blocked_divergent<rules>,
#define ZOX_BLOCKED_PARALLEL(Name, name, rules, ...) .name = cast_blocked_parallel<rules>,
#define ZOX_GENERAL(Name, name, rules, ...) .name = cast_general<rules>,
#define ZOX_MAXIMUM(Name, name, Element, Mask) .name = ZOX_MAXIMUM_##Mask<Element>,
#define ZOX_WINDOW_LEVEL(Name, name, ...) .name = window_level,
#define ZOX_MAXIMUM_None find_max_plain
#define ZOX_MAXIMUM_Bits find_max_bit_mask
#define ZOX_MAXIMUM_Bytes find_max_byte_mask

// A parallel nearest operation has two routines, named after it, after plane and voxel, and their path.
#define ZOX_JOIN(a, b, c) ZOX_JOIN_(a, b, c)
#define ZOX_JOIN_(a, b, c) a##b##c
#define ZOX_PLANE_AND_8U 8U_8U
#define ZOX_PLANE_AND_16S 16S_16S
#define ZOX_PLANE_AND_Bit 8U_Bit
#define ZOX_ROUTINE(Voxel, path) \
  ZOX_JOIN(zox_Volume_RayCast_General_Parallel_Nearest_, ZOX_PLANE_AND_##Voxel, path)

#define ZOX_ROUTINES(Name, name, rules, Layout, Projection, Sampling, Voxel)                                \
  int ZOX_ROUTINE(Voxel, _OneRegion)(const zox_Rays* rays, int nrays, int /*min_samples*/, int max_samples, \
                                     const zox_Volume* volume) {                                            \
    return cast_one_region<kOneRegion##Voxel>(*rays, nrays, max_samples, *volume);                          \
  }                                                                                                         \
  int ZOX_ROUTINE(Voxel, _MultiRegion)(const zox_Rays* rays, int /*nrays*/, int max_samples,                \
                                       const zox_Volume* volume) {                                          \
    return cast_buckets<rules>(*rays, max_samples, *volume);                                                \
  }
ZOX_CASTERS_GPN(ZOX_ROUTINES)
ZOX_CASTERS_GP_BIT(ZOX_ROUTINES)

#define ZOX_PARALLEL_NEAREST(Name, name, rules, Layout, Projection, Sampling, Voxel) \
  .name = cast_parallel_nearest<ZOX_ROUTINE(Voxel, _OneRegion), ZOX_ROUTINE(Voxel, _MultiRegion)>,

}  // namespace

const Operations kOperations = {
    .name = ZOX_SET_NAME,
    .supported = ZOX_SET_SUPPORTED,
    // clang-format off
    ZOX_CASTERS_BDN(ZOX_BLOCKED_DIVERGENT)
    ZOX_CASTERS_BDT(ZOX_BLOCKED_DIVERGENT)
    ZOX_CASTERS_BPN(ZOX_BLOCKED_PARALLEL)
    ZOX_CASTERS_BPT(ZOX_BLOCKED_PARALLEL)
    ZOX_CASTERS_GDN(ZOX_GENERAL)
    ZOX_CASTERS_GD_BIT(ZOX_GENERAL)
    ZOX_CASTERS_GDT(ZOX_GENERAL)
    ZOX_CASTERS_GPN(ZOX_PARALLEL_NEAREST)
    ZOX_CASTERS_GP_BIT(ZOX_PARALLEL_NEAREST)
    ZOX_CASTERS_GPT(ZOX_GENERAL)
    ZOX_MAXIMA(ZOX_MAXIMUM)
    ZOX_WINDOW_LEVELS(ZOX_WINDOW_LEVEL)
    // clang-format on
};

}  // namespace zox::ZOX_SET
