// How parallel rays are walked through a blocked volume.
#pragma once

#include "numbers/fixed_point.h"

namespace zox::ZOX_SET {
namespace {

inline double magnitude(double v) { return v < 0 ? -v : v; }
inline double distance(double a, double b) { return magnitude(a - b); }
// In 32 bits, where -2^31 has no opposite and stays.
inline double distance(int a, int b) {
  int apart = wrap_sub(a, b);
  return apart < 0 ? wrap_sub(0, apart) : apart;
}

// The longest of the three lengths, x counted at 1 / x_weight, y at 1/6, z at 1. Lengths are
// 0 or more.
template <int x_weight>
double weighed(const double (&length)[3]) {
  double longest = 0.0;
  double x = length[0] / x_weight, y = length[1] / 6.0, z = length[2];
  if (x > longest) longest = x;
  if (y > longest) longest = y;
  if (z > longest) longest = z;
  return longest;
}

// Sample by sample, across the batch, when the step is longer than the rays are apart: means of
// the distances between neighbouring starts, each axis by itself, formed first and then weighed.
// unit is what an offset of 1 is in voxels.
template <int x_weight, class Offset>
bool sample_by_sample(const double* step, const Axes<Offset>& offset, int nrays, double unit) {
  double step_length[3], spacing[3] = {0.0, 0.0, 0.0};
  for (int axis = 0; axis < 3; ++axis) {
    step_length[axis] = magnitude(step[axis]);
    for (int r = 1; r < nrays; ++r) {
      spacing[axis] += distance(offset[axis][r], offset[axis][r - 1]) * unit;
    }
    if (nrays > 1) spacing[axis] /= nrays - 1;
  }
  return weighed<x_weight>(step_length) > weighed<x_weight>(spacing);
}

}  // namespace
}  // namespace zox::ZOX_SET
