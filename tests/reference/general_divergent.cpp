// Slice stacks, every ray with its own step.
#include "general_stack.h"
#include "reference.h"

namespace reference {
namespace {

// Steps in x and y are rounded on a one-region volume only, and never for one-bit voxels; all
// else is truncated, the starts in x and y after half a voxel has been added.
template <typename Voxel, bool kRoundsOnOneRegion>
int cast_nearest(const zox_Volume& volume, const zox_Rays& rays) {
  const bool rounds = kRoundsOnOneRegion && volume.nregions == 1;
  return cast_stack_nearest<Voxel>(volume, rays, [&](int32_t r) {
    const double* start = rays.starts[r];
    const double* step = rays.steps[r];
    const double dx = step[0] * kNearestScale;
    const double dy = step[1] * kNearestScale;
    return FixedRay{truncate((start[0] + 0.5) * kNearestScale),
                    truncate((start[1] + 0.5) * kNearestScale),
                    truncate(start[2] * kNearestScale),
                    rounds ? add_half_and_truncate(dx) : truncate(dx),
                    rounds ? add_half_and_truncate(dy) : truncate(dy),
                    truncate(step[2] * kNearestScale)};
  });
}

template <typename Voxel, auto kOffset, typename Convert>
int cast_trilinear(const zox_Volume& volume, const zox_Rays& rays, Convert convert_bound) {
  return cast_stack_trilinear<Voxel, kOffset>(volume, rays, convert_bound,
                                              [&rays](int32_t r) { return rays.steps[r]; });
}

}  // namespace

int general_divergent_nearest_8u(const zox_Volume* volume, const zox_Rays* rays) {
  return cast_nearest<ByteVoxel, true>(*volume, *rays);
}
int general_divergent_nearest_16s(const zox_Volume* volume, const zox_Rays* rays) {
  return cast_nearest<ShortVoxel, true>(*volume, *rays);
}
int general_divergent_nearest_bit_8u(const zox_Volume* volume, const zox_Rays* rays) {
  return cast_nearest<BitVoxel, false>(*volume, *rays);
}

// Deliberately unlike: 8-bit rounds the region boundaries, 16-bit truncates them.
int general_divergent_trilinear_8u(const zox_Volume* volume, const zox_Rays* rays) {
  return cast_trilinear<uint8_t, wrapping_offset>(*volume, *rays, add_half_and_truncate);
}
int general_divergent_trilinear_16s(const zox_Volume* volume, const zox_Rays* rays) {
  return cast_trilinear<int16_t, plain_offset<int16_t>>(*volume, *rays, truncate);
}

}  // namespace reference
