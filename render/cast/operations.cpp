#include "cast/operations.h"

namespace render {

Sampler sampler(Layout layout, bool nearest) {
  if (layout == Layout::kBricks) {
    if (nearest)
      return {true, true, zox_Volume_RayCast_Blocked_Divergent_Nearest_16S,
              zox_Volume_RayCast_Blocked_Parallel_Nearest_16S};
    return {true, false, zox_Volume_RayCast_Blocked_Divergent_Trilinear_16S,
            zox_Volume_RayCast_Blocked_Parallel_Trilinear_16S};
  }
  if (nearest)
    return {false, true, zox_Volume_RayCast_General_Divergent_Nearest_16S,
            zox_Volume_RayCast_General_Parallel_Nearest_16S};
  return {false, false, zox_Volume_RayCast_General_Divergent_Trilinear_16S,
          zox_Volume_RayCast_General_Parallel_Trilinear_16S};
}

Excess excess(const Sampler& sampler, bool parallel) {
  if (sampler.bricks) return kNoExcess;
  if (!sampler.nearest) return {0.75, 0.75};
  return parallel ? kNoExcess : Excess{0.375, 0};
}

}  // namespace render
