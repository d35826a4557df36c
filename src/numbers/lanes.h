// The shape of every hot loop: a batch's rays, or a run of samples, stand side by side as lanes
// of short arrays, and a sample is computed in stages, each one plain loop over all lanes that
// the compiler turns into the set's vectors.
#pragma once

#include <stdint.h>

#include "sets/set.h"

namespace zox::ZOX_SET {
namespace {

constexpr int kLanes = 64;

// Arithmetic stages run over whole vectors: lanes from n up to padded(n) hold leftovers, which
// may be computed with, as integers, but never loaded through.
constexpr int padded(int n) { return (n + 15) & -16; }

template <class T>
struct alignas(64) Lanes {
  T at[kLanes];
  T& operator[](int i) { return at[i]; }
  const T& operator[](int i) const { return at[i]; }
};

// One array an axis: x, y, z.
template <class T>
using Axes = Lanes<T>[3];

// Repeats lane 0 behind the last of n lanes. What doubles are computed or converted from must be
// padded: leftovers could raise floating-point exceptions that no sample raises.
template <class T>
void pad_lanes(Axes<T>& axes, int n) {
  for (auto& lanes : axes) {
    for (int i = n; i < padded(n); ++i) lanes[i] = lanes[0];
  }
}

// The compiler neither moves loads across this nor gathers from both sides at once. Between
// samples it keeps voxels being read slice after slice.
inline void keep_order() { __asm__ volatile("" ::: "memory"); }

// Bit i is set where flags[i] is not 0; the lanes from n on do not count.
inline uint64_t flagged_lanes(const Lanes<uint8_t>& flags, int n) {
  uint64_t mask = 0;
  for (int i = 0; i < padded(n); i += 16) {
    mask |= uint64_t{nonzero_bytes(&flags.at[i])} << i;
  }
  return n < kLanes ? mask & ((uint64_t{1} << n) - 1) : mask;
}

}  // namespace
}  // namespace zox::ZOX_SET
