// Samples of a blocked volume at up to 64 positions at once.
#pragma once

#include "blocked/blocked_layout.h"
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

template <class Element, class Position>
void sample_nearest(const BlockedVolume<Element>& volume, const Axes<Position>& position, int n,
                    Element* __restrict values) {
  Axes<int> voxel;
  Lanes<uint32_t> number;
  locate(position, n, voxel);
  for (int i = 0; i < padded(n); ++i) {
    number[i] = volume.x_term(voxel[0][i]) | volume.y_term(voxel[1][i]) | volume.z_term(voxel[2][i]);
  }
  for (int i = 0; i < n; ++i) values[i] = volume.data[number[i]];
}

template <class Element>
void fetch_corners(const BlockedVolume<Element>& volume, const Axes<int>& voxel, int n,
                   Corners<Element>& corners) {
  Lanes<uint32_t> number[4];
  Lanes<uint32_t> to_right;  // exchanges the x term for that of x + 1
  Lanes<uint8_t> at_cell_end;
  for (int i = 0; i < padded(n); ++i) {
    int x = voxel[0][i], y = voxel[1][i], z = voxel[2][i];
    uint32_t x0 = volume.x_term(x), y0 = volume.y_term(y), z0 = volume.z_term(z);
    uint32_t y_exchange = y0 ^ volume.y_term(wrap_add(y, 1)), z_exchange = z0 ^ volume.z_term(wrap_add(z, 1));
    uint32_t first = x0 | y0 | z0;
    number[0][i] = first;
    number[1][i] = first ^ y_exchange;
    number[2][i] = first ^ z_exchange;
    number[3][i] = first ^ y_exchange ^ z_exchange;
    to_right[i] = x0 ^ volume.x_term(wrap_add(x, 1));
    at_cell_end[i] = (x & 3) == 3;
  }
  for (int row = 0; row < 4; ++row) {
    for (int i = 0; i < n; ++i) {
      corners.pair[row][i] = load_pair<Element>(volume.data + number[row][i]);
    }
  }
  // Inside a cell x + 1 is the next element. At its end the pair's right half came from another
  // voxel (of the same buffer, since x + 1 lies in it) and is replaced.
  for (uint64_t lanes = flagged_lanes(at_cell_end, n); lanes != 0; lanes &= lanes - 1) {
    int i = __builtin_ctzll(lanes);
    for (int row = 0; row < 4; ++row) {
      Element right = volume.data[number[row][i] ^ to_right[i]];
      corners.pair[row][i] = VoxelPair<Element>::with_right(corners.pair[row][i], right);
    }
  }
}

template <class Element>
void sample_trilinear(const BlockedVolume<Element>& volume, const Axes<int>& position, int n,
                      Element* __restrict values) {
  Axes<int> voxel;
  Corners<Element> corners;
  locate(position, n, voxel);
  fetch_corners(volume, voxel, n, corners);
  for (int i = 0; i < padded(n); ++i) {
    values[i] = static_cast<Element>(
        corners.interpolated(trilinear_fixed, i, position[0][i], position[1][i], position[2][i]));
  }
}

template <class Element>
void sample_trilinear(const BlockedVolume<Element>& volume, const Axes<double>& position, int n,
                      Element* __restrict values) {
  Axes<int> voxel;
  Corners<Element> corners;
  Lanes<double> sum;
  Lanes<int> truncated;
  locate(position, n, voxel);
  fetch_corners(volume, voxel, n, corners);
  for (int i = 0; i < padded(n); ++i) {
    sum[i] = corners.interpolated(trilinear_sum, i, position[0][i] - voxel[0][i],
                                  position[1][i] - voxel[1][i], position[2][i] - voxel[2][i]);
  }
  truncate_lanes(sum.at, truncated.at, n);
  for (int i = 0; i < padded(n); ++i) values[i] = static_cast<Element>(truncated[i]);
}

template <Sampling sampling, class Element, class Position>
void sample_blocked(const BlockedVolume<Element>& volume, const Axes<Position>& position, int n,
                    Element* __restrict values) {
  if constexpr (sampling == Sampling::kNearest) {
    sample_nearest(volume, position, n, values);
  } else {
    sample_trilinear(volume, position, n, values);
  }
}

}  // namespace
}  // namespace zox::ZOX_SET
