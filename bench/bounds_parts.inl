// The operations of one instruction set whose parts are timed. A set's file defines ZOX_SET and
// ZOX_BENCH_BOUNDS, the name of its list, and includes this.
#include "bounds.h"
#include "bounds_blocked.h"
#include "bounds_stack.h"

namespace bench {

using namespace zox;
using namespace zox::ZOX_SET;

const Bounds ZOX_BENCH_BOUNDS[] = {
    ZOX_BLOCKED_BOUNDS(blocked_divergent_nearest_16s, kBlockedDivergentNearest16S),
    ZOX_BLOCKED_BOUNDS(blocked_parallel_trilinear_8u, kBlockedParallelTrilinear8U),
    ZOX_BLOCKED_BOUNDS(blocked_divergent_trilinear_8u, kBlockedDivergentTrilinear8U),
    ZOX_BLOCKED_BOUNDS(blocked_divergent_trilinear_16s, kBlockedDivergentTrilinear16S),
    ZOX_STACK_BOUNDS(general_divergent_nearest_8u, kDivergentNearest8U),
    ZOX_STACK_BOUNDS(general_divergent_nearest_16s, kDivergentNearest16S),
    ZOX_STACK_BOUNDS(general_divergent_trilinear_16s, kDivergentTrilinear16S),
    {},
};

}  // namespace bench
