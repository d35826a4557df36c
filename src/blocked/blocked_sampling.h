// Samples of a blocked volume at up to 64 positions at once.
#pragma once

#include "blocked/blocked_layout.h"
#include "numbers/cache_lines.h"
#include "numbers/fixed_point.h"
#include "numbers/value.h"
#include "numbers/voxel_pair.h"
#include "operations/rules.h"

namespace zox::ZOX_SET {
namespace {

// The voxel that a position falls into.
inline void locate(const Axes<int>& position, int n, Axes<int>& voxel) {
  for (int axis = 0; axis < 3; ++axis) {
    for (int i = 0; i < padded(n); ++i) voxel[axis][i] = position[axis][i] >> 20;
  }
}

inline void locate(const Axes<double>& position, int n, Axes<int>& voxel) {
  for (int axis = 0; axis < 3; ++axis) truncate_lanes(position[axis].at, voxel[axis].at, n);
}

// Where samples lie, and what else their values need: set by place(), read by values_of().
template <Sampling sampling, class Position>
struct Places;
template <class Position>
struct Places<Sampling::kNearest, Position> {
  Lanes<int> number;
};
template <class Position>
struct Places<Sampling::kTrilinear, Position> {
  Lanes<int> number[4];  // the left voxels of the pairs of Corners
  Lanes<int> to_right;   // exchanges the x term for that of x + 1
  Lanes<uint8_t> at_cell_end;
  Axes<Position> fraction;  // of fixed point the voxel as well
};
template <class Position>
using NearestPlaces = Places<Sampling::kNearest, Position>;
template <class Position>
using TrilinearPlaces = Places<Sampling::kTrilinear, Position>;

template <class Element, class Position>
void place(BlockedVolume<Element> volume, const Axes<Position>& position, int n,
           NearestPlaces<Position>& __restrict to) {
  Axes<int> voxel;
  locate(position, n, voxel);
  for (int i = 0; i < padded(n); ++i) {
    to.number[i] = static_cast<int>(volume.x_term(voxel[0][i]) | volume.y_term(voxel[1][i]) |
                                    volume.z_term(voxel[2][i]));
  }
}

inline int fraction_of(int position, int) { return position; }
inline double fraction_of(double position, int voxel) { return position - voxel; }

template <class Element, class Position>
[[gnu::noinline]] void place(BlockedVolume<Element> volume, const Axes<Position>& position, int n,
                             TrilinearPlaces<Position>& __restrict to) {
  Axes<int> voxel;
  locate(position, n, voxel);
  for (int i = 0; i < padded(n); ++i) {
    int x = voxel[0][i], y = voxel[1][i], z = voxel[2][i];
    uint32_t x0 = volume.x_term(x), y0 = volume.y_term(y), z0 = volume.z_term(z);
    uint32_t y_exchange = y0 ^ volume.y_term(wrap_add(y, 1)), z_exchange = z0 ^ volume.z_term(wrap_add(z, 1));
    uint32_t first = x0 | y0 | z0;
    to.number[0][i] = static_cast<int>(first);
    to.number[1][i] = static_cast<int>(first ^ y_exchange);
    to.number[2][i] = static_cast<int>(first ^ z_exchange);
    to.number[3][i] = static_cast<int>(first ^ y_exchange ^ z_exchange);
    to.to_right[i] = static_cast<int>(x0 ^ volume.x_term(wrap_add(x, 1)));
    to.at_cell_end[i] = (x & 3) == 3;
  }
  for (int axis = 0; axis < 3; ++axis) {
    for (int i = 0; i < padded(n); ++i) to.fraction[axis][i] = fraction_of(position[axis][i], voxel[axis][i]);
  }
}

// Neighbouring rays mostly share cells: some lanes stand for all. Choosing lanes by their lines costs more
// than it saves, as their number cannot be foreseen.
template <class Element, class Position>
[[gnu::always_inline]] inline void ask(const BlockedVolume<Element>& volume,
                                       const NearestPlaces<Position>& places, int n) {
  for (int i = 0; i < n; i += 4) __builtin_prefetch(volume.at(places.number[i]));
}

// Every row of corners, and the cells to the right of both ends.
template <class Element, class Position>
[[gnu::always_inline]] inline void ask(const BlockedVolume<Element>& volume,
                                       const TrilinearPlaces<Position>& places, int n) {
  for (int i = 0; i < n; i += 4) {
    for (int row = 0; row < 4; ++row) __builtin_prefetch(volume.at(places.number[row][i]));
    __builtin_prefetch(volume.at(places.number[0][i] ^ places.to_right[i]));
    __builtin_prefetch(volume.at(places.number[3][i] ^ places.to_right[i]));
  }
}

template <class Element, class Position>
void values_of(const BlockedVolume<Element>& volume, const NearestPlaces<Position>& places, int n,
               Element* __restrict values) {
  for (int i = 0; i < n; ++i) values[i] = *volume.at(places.number[i]);
}

// Lanes from n on repeat lane 0: what they read is read anyway. The volume is a copy, which stores cannot
// change.
template <class Element, class Position>
void fetch_corners(const BlockedVolume<Element> volume, const TrilinearPlaces<Position>& places, int n,
                   Corners<Element>& corners) {
  for (int row = 0; row < 4; ++row) {
    const int* number = places.number[row].at;
    auto* pairs = corners.pair[row].at;
    for (int i = 0; i < n; i += 16)
      store_pairs<Element>(pairs + i, [&](int j) { return volume.at(number[i + j]); });
  }
  // Inside a cell x + 1 is the next element. At its end the pair's right half came from another
  // voxel (of the same buffer, since x + 1 lies in it) and is replaced.
  for (uint64_t lanes = flagged_lanes(places.at_cell_end, n); lanes != 0; lanes &= lanes - 1) {
    int i = __builtin_ctzll(lanes);
    for (int row = 0; row < 4; ++row) {
      Element right = *volume.at(places.number[row][i] ^ places.to_right[i]);
      corners.pair[row][i] = VoxelPair<Element>::with_right(corners.pair[row][i], right);
    }
  }
}

template <class Element>
void interpolate(const Corners<Element>& corners, const TrilinearPlaces<int>& places, int n,
                 Element* __restrict values) {
  const auto& f = places.fraction;
  for (int i = 0; i < padded(n); ++i) {
    values[i] = static_cast<Element>(corners.interpolated(trilinear_fixed, i, f[0][i], f[1][i], f[2][i]));
  }
}

template <class Element>
void interpolate(const Corners<Element>& corners, const TrilinearPlaces<double>& places, int n,
                 Element* __restrict values) {
  Lanes<double> sum;
  Lanes<int> truncated;
  const auto& f = places.fraction;
  for (int i = 0; i < padded(n); ++i) {
    sum[i] = corners.interpolated(trilinear_sum, i, f[0][i], f[1][i], f[2][i]);
  }
  truncate_lanes(sum.at, truncated.at, n);
  for (int i = 0; i < padded(n); ++i) values[i] = static_cast<Element>(truncated[i]);
}

// Not inlined, nor placing: march() calls both in two places, each time for up to 64 samples.
template <class Element, class Position>
[[gnu::noinline]] void values_of(const BlockedVolume<Element>& volume,
                                 const TrilinearPlaces<Position>& places, int n, Element* __restrict values) {
  Corners<Element> corners;
  fetch_corners(volume, places, n, corners);
  interpolate(corners, places, n, values);
}

// What march() does with positions. Samples are placed, and their lines asked for, up to kRing - 1 samples
// before their values are computed: loads then find them in the cache.
template <Sampling sampling, class Element, class Position>
struct BlockedSampler {
  static constexpr int kRing = sampling == Sampling::kNearest ? 4 : 2;  // as far as the stack promised allows

  explicit BlockedSampler(const BlockedVolume<Element>& from) : volume(from) {}

  void place_next(int k, const Axes<Position>& position, int n, bool asked) {
    place(volume, position, n, places(k));
    if (asked) ask(volume, places(k), n);
  }
  void values(int k, int n, Element* __restrict to) { values_of(volume, places(k), n, to); }
  Places<sampling, Position>& places(int k) { return ring[k & (kRing - 1)]; }

  const BlockedVolume<Element>& volume;
  Places<sampling, Position> ring[kRing];
};

}  // namespace
}  // namespace zox::ZOX_SET
