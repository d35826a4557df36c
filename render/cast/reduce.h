// What remains of the samples of a batch, for each of its rays.
#pragma once

#include <zox_volume.h>

#include <array>
#include <cstdint>

namespace render {

inline constexpr int kBatchRays = 64;
// Planes lie an odd number of cache lines apart.
inline constexpr int kPlanePitch = 96;

struct Wanted {
  bool largest, smallest, sum, places;
};

struct Reduced {
  std::array<int16_t, kBatchRays> largest, smallest, largest_at, smallest_at;
  std::array<int64_t, kBatchRays> sum;
};

// Planes hold kBatchRays elements, whatever the number of rays; places are the first sample numbers that hold
// the largest and the smallest. middle: of guarded samples, whose sum is of the samples themselves; null
// otherwise.
void reduce(const zox_Rays& rays, const Wanted& wanted, const int* middle, Reduced& reduced);

}  // namespace render
