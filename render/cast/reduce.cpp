#include "cast/reduce.h"

#include <algorithm>

#include "volume/storage.h"

namespace render {
namespace {

using Lanes = std::array<int16_t, kBatchRays>;

const int16_t* plane(const zox_Rays& rays, int k) { return static_cast<const int16_t*>(rays.planes[k]); }

struct Counts {
  Lanes of{};  // rays beyond the last have none
  int fewest = INT16_MAX, most = 0;
  explicit Counts(const zox_Rays& rays) {
    for (int r = 0; r < rays.nrays; ++r) {
      const int n = rays.nsamples[r];
      of[static_cast<size_t>(r)] = static_cast<int16_t>(n);
      fewest = std::min(fewest, n);
      most = std::max(most, n);
    }
  }
};

void find_smallest(const zox_Rays& rays, const Counts& counts, Lanes& smallest) {
  smallest.fill(INT16_MAX);
  for (int k = 0; k < counts.most; ++k) {
    const int16_t* samples = plane(rays, k);
    for (size_t r = 0; r < kBatchRays; ++r) {
      const int16_t sample = k < counts.of[r] ? samples[r] : INT16_MAX;
      smallest[r] = std::min(smallest[r], sample);
    }
  }
}

// wanted holds samples, guarded planes do not: several of their values are one sample.
template <bool kGuarded>
void find_first(const zox_Rays& rays, const Counts& counts, const Lanes& wanted, Lanes& places) {
  for (int k = counts.most - 1; k >= 0; --k) {
    const int16_t* samples = plane(rays, k);
    const int16_t number = static_cast<int16_t>(k);
    for (size_t r = 0; r < kBatchRays; ++r) {
      const int16_t sample = kGuarded ? from_guarded(samples[r]) : samples[r];
      places[r] = (number < counts.of[r]) & (sample == wanted[r]) ? number : places[r];
    }
  }
}

void find_places(const zox_Rays& rays, const Counts& counts, bool guarded, const Lanes& wanted,
                 Lanes& places) {
  guarded ? find_first<true>(rays, counts, wanted, places) : find_first<false>(rays, counts, wanted, places);
}

void add(const zox_Rays& rays, const Counts& counts, const int* middle,
         std::array<int64_t, kBatchRays>& sum) {
  std::array<int32_t, kBatchRays> part{};
  sum.fill(0);
  for (int k = 0; k < counts.most; ++k) {
    const int16_t* samples = plane(rays, k);
    for (size_t r = 0; r < kBatchRays; ++r) {
      const int sample = middle ? from_guarded(samples[r]) : samples[r];
      part[r] += k < counts.of[r] ? sample : 0;
    }
  }
  for (size_t r = 0; r < kBatchRays; ++r) sum[r] = part[r] + (middle ? int64_t{*middle} * counts.of[r] : 0);
}

void unguard(Lanes& lanes) {
  for (int16_t& lane : lanes) lane = from_guarded(lane);
}

void shift(int by, Lanes& lanes) {
  for (int16_t& lane : lanes) lane = static_cast<int16_t>(lane + by);
}

// One of the two extremes, first as the planes hold it.
void finish(const zox_Rays& rays, const Counts& counts, bool with_places, const int* middle, Lanes& extreme,
            Lanes& places) {
  if (middle) unguard(extreme);
  if (with_places) find_places(rays, counts, middle != nullptr, extreme, places);
  if (middle) shift(*middle, extreme);
}

}  // namespace

void reduce(const zox_Rays& rays, const Wanted& wanted, const int* middle, Reduced& reduced) {
  if (wanted.largest) zox_Volume_FindMax_16S(&rays, reduced.largest.data());
  if (wanted.largest && !wanted.smallest && !wanted.places && !middle) return;
  const Counts counts(rays);
  if (wanted.largest) {
    finish(rays, counts, wanted.places, middle, reduced.largest, reduced.largest_at);
  }
  if (wanted.smallest) {
    find_smallest(rays, counts, reduced.smallest);
    finish(rays, counts, wanted.places, middle, reduced.smallest, reduced.smallest_at);
  }
  if (wanted.sum) add(rays, counts, middle, reduced.sum);
}

}  // namespace render
