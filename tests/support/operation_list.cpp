#include "operation_list.h"

#include "reference.h"

namespace zox_test {

#define ZOX_TEST_CASTER(upper, lower, layout, projection, fetch, size)                             \
  {                                                                                                \
#upper, &zox::Operations::lower, zox_Volume_RayCast_##upper, reference::lower, Layout::layout, \
        Projection::projection, Fetch::fetch, size                                                 \
  }

const Caster kCasters[kCasterCount] = {
    ZOX_TEST_CASTER(Blocked_Divergent_Nearest_8U, blocked_divergent_nearest_8u, kBlocked, kDivergent,
                    kNearest, 1),
    ZOX_TEST_CASTER(Blocked_Divergent_Nearest_16S, blocked_divergent_nearest_16s, kBlocked, kDivergent,
                    kNearest, 2),
    ZOX_TEST_CASTER(Blocked_Divergent_Trilinear_8U, blocked_divergent_trilinear_8u, kBlocked, kDivergent,
                    kTrilinear, 1),
    ZOX_TEST_CASTER(Blocked_Divergent_Trilinear_16S, blocked_divergent_trilinear_16s, kBlocked, kDivergent,
                    kTrilinear, 2),
    ZOX_TEST_CASTER(Blocked_Parallel_Nearest_8U, blocked_parallel_nearest_8u, kBlocked, kParallel, kNearest,
                    1),
    ZOX_TEST_CASTER(Blocked_Parallel_Nearest_16S, blocked_parallel_nearest_16s, kBlocked, kParallel, kNearest,
                    2),
    ZOX_TEST_CASTER(Blocked_Parallel_Trilinear_8U, blocked_parallel_trilinear_8u, kBlocked, kParallel,
                    kTrilinear, 1),
    ZOX_TEST_CASTER(Blocked_Parallel_Trilinear_16S, blocked_parallel_trilinear_16s, kBlocked, kParallel,
                    kTrilinear, 2),
    ZOX_TEST_CASTER(General_Divergent_Nearest_8U, general_divergent_nearest_8u, kGeneral, kDivergent,
                    kNearest, 1),
    ZOX_TEST_CASTER(General_Divergent_Nearest_16S, general_divergent_nearest_16s, kGeneral, kDivergent,
                    kNearest, 2),
    ZOX_TEST_CASTER(General_Divergent_Nearest_Bit_8U, general_divergent_nearest_bit_8u, kGeneral, kDivergent,
                    kNearestBit, 1),
    ZOX_TEST_CASTER(General_Divergent_Trilinear_8U, general_divergent_trilinear_8u, kGeneral, kDivergent,
                    kTrilinear, 1),
    ZOX_TEST_CASTER(General_Divergent_Trilinear_16S, general_divergent_trilinear_16s, kGeneral, kDivergent,
                    kTrilinear, 2),
    ZOX_TEST_CASTER(General_Parallel_Nearest_8U, general_parallel_nearest_8u, kGeneral, kParallel, kNearest,
                    1),
    ZOX_TEST_CASTER(General_Parallel_Nearest_16S, general_parallel_nearest_16s, kGeneral, kParallel, kNearest,
                    2),
    ZOX_TEST_CASTER(General_Parallel_Nearest_Bit_8U, general_parallel_nearest_bit_8u, kGeneral, kParallel,
                    kNearestBit, 1),
    ZOX_TEST_CASTER(General_Parallel_Trilinear_8U, general_parallel_trilinear_8u, kGeneral, kParallel,
                    kTrilinear, 1),
    ZOX_TEST_CASTER(General_Parallel_Trilinear_16S, general_parallel_trilinear_16s, kGeneral, kParallel,
                    kTrilinear, 2),
};

#undef ZOX_TEST_CASTER

}  // namespace zox_test
