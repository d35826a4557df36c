// Every kernel of one instruction set: the index of all operations. A set's file defines ZOX_SET
// and includes this; all that follows is local to that file.
#include "blocked/blocked_divergent.h"
#include "blocked/blocked_parallel.h"
#include "maximum/maximum.h"
#include "operations/table.h"
#include "stack/one_region.h"
#include "stack/stack_cast.h"
#include "window/window_level.h"

namespace zox::ZOX_SET {
namespace {

// The two routines of each parallel nearest operation.
int zox_Volume_RayCast_General_Parallel_Nearest_8U_8U_OneRegion(const zox_Rays* rays, int nrays,
                                                                int /*min_samples*/, int max_samples,
                                                                const zox_Volume* volume) {
  return cast_one_region<kOneRegion8U>(*rays, nrays, max_samples, *volume);
}
int zox_Volume_RayCast_General_Parallel_Nearest_16S_16S_OneRegion(const zox_Rays* rays, int nrays,
                                                                  int /*min_samples*/, int max_samples,
                                                                  const zox_Volume* volume) {
  return cast_one_region<kOneRegion16S>(*rays, nrays, max_samples, *volume);
}
int zox_Volume_RayCast_General_Parallel_Nearest_8U_Bit_OneRegion(const zox_Rays* rays, int nrays,
                                                                 int /*min_samples*/, int max_samples,
                                                                 const zox_Volume* volume) {
  return cast_one_region<kOneRegionBit>(*rays, nrays, max_samples, *volume);
}
int zox_Volume_RayCast_General_Parallel_Nearest_8U_8U_MultiRegion(const zox_Rays* rays, int /*nrays*/,
                                                                  int max_samples, const zox_Volume* volume) {
  return cast_buckets<kParallelNearest8U>(*rays, max_samples, *volume);
}
int zox_Volume_RayCast_General_Parallel_Nearest_16S_16S_MultiRegion(const zox_Rays* rays, int /*nrays*/,
                                                                    int max_samples,
                                                                    const zox_Volume* volume) {
  return cast_buckets<kParallelNearest16S>(*rays, max_samples, *volume);
}
int zox_Volume_RayCast_General_Parallel_Nearest_8U_Bit_MultiRegion(const zox_Rays* rays, int /*nrays*/,
                                                                   int max_samples,
                                                                   const zox_Volume* volume) {
  return cast_buckets<kParallelNearestBit>(*rays, max_samples, *volume);
}

}  // namespace

const Operations kOperations = {
    .name = ZOX_SET_NAME,
    .supported = ZOX_SET_SUPPORTED,
    .blocked_divergent_nearest_8u = cast_blocked_divergent<kBlockedDivergentNearest8U>,
    .blocked_divergent_nearest_16s = cast_blocked_divergent<kBlockedDivergentNearest16S>,
    .blocked_divergent_trilinear_8u = cast_blocked_divergent<kBlockedDivergentTrilinear8U>,
    .blocked_divergent_trilinear_16s = cast_blocked_divergent<kBlockedDivergentTrilinear16S>,
    .blocked_parallel_nearest_8u = cast_blocked_parallel<kBlockedParallelNearest8U>,
    .blocked_parallel_nearest_16s = cast_blocked_parallel<kBlockedParallelNearest16S>,
    .blocked_parallel_trilinear_8u = cast_blocked_parallel<kBlockedParallelTrilinear8U>,
    .blocked_parallel_trilinear_16s = cast_blocked_parallel<kBlockedParallelTrilinear16S>,
    .general_divergent_nearest_8u = cast_general<kDivergentNearest8U>,
    .general_divergent_nearest_16s = cast_general<kDivergentNearest16S>,
    .general_divergent_nearest_bit_8u = cast_general<kDivergentNearestBit>,
    .general_divergent_trilinear_8u = cast_general<kDivergentTrilinear8U>,
    .general_divergent_trilinear_16s = cast_general<kDivergentTrilinear16S>,
    .general_parallel_nearest_8u =
        cast_parallel_nearest<zox_Volume_RayCast_General_Parallel_Nearest_8U_8U_OneRegion,
                              zox_Volume_RayCast_General_Parallel_Nearest_8U_8U_MultiRegion>,
    .general_parallel_nearest_16s =
        cast_parallel_nearest<zox_Volume_RayCast_General_Parallel_Nearest_16S_16S_OneRegion,
                              zox_Volume_RayCast_General_Parallel_Nearest_16S_16S_MultiRegion>,
    .general_parallel_nearest_bit_8u =
        cast_parallel_nearest<zox_Volume_RayCast_General_Parallel_Nearest_8U_Bit_OneRegion,
                              zox_Volume_RayCast_General_Parallel_Nearest_8U_Bit_MultiRegion>,
    .general_parallel_trilinear_8u = cast_general<kParallelTrilinear8U>,
    .general_parallel_trilinear_16s = cast_general<kParallelTrilinear16S>,
    .find_max_8u = find_max_plain<uint8_t>,
    .find_max_16s = find_max_plain<int16_t>,
    .find_max_bmask_8u = find_max_bit_mask<uint8_t>,
    .find_max_bmask_16s = find_max_bit_mask<int16_t>,
    .find_max_cmask_8u = find_max_byte_mask<uint8_t>,
    .find_max_cmask_16s = find_max_byte_mask<int16_t>,
    .window_level_16s_8u = window_level,
};

}  // namespace zox::ZOX_SET
