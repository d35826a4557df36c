// What a sample is worth, given the voxels and fractions: each formula once.
#pragma once

#include <stdint.h>

namespace zox::ZOX_SET {
namespace {

// The voxels around a sample, named by their offset: v101 is the one at x + 1, y, z + 1.
struct Cell {
  int v000, v100, v010, v110, v001, v101, v011, v111;
};

// Interpolation in doubles, a sum of eight weighted corners. The order of products and of terms
// is part of the result: equal corners do not always give back their value.
inline double trilinear_sum(double fx, double fy, double fz, const Cell& cell) {
  const auto [v000, v100, v010, v110, v001, v101, v011, v111] = cell;
  double gx = 1.0 - fx, gy = 1.0 - fy, gz = 1.0 - fz;
  double gg = gy * gx, gf = gy * fx, fg = gx * fy, ff = fx * fy;
  return (gg * gz) * v000 + (gf * gz) * v100 + (fg * gz) * v010 + (gg * fz) * v001 + (ff * gz) * v110 +
         (gf * fz) * v101 + (fg * fz) * v011 + (ff * fz) * v111;
}

// Interpolation of bytes in 32-bit integers: x keeps 20 fraction bits, y and z the upper 10, and
// a difference drops 10 bits before it is weighted. Shifts floor, so a result may fall below its
// voxels: -1, stored as 255, over nearly black ones.
inline int lerp_20(int left, int right, int fx) { return (left << 20) + (right - left) * fx; }
inline int lerp_10(int from, int to, int weight) { return ((to - from) >> 10) * weight + from; }
inline int trilinear_fixed(int x, int y, int z, const Cell& cell) {
  const auto [v000, v100, v010, v110, v001, v101, v011, v111] = cell;
  int fx = x & 0xFFFFF, fy = (y >> 10) & 0x3FF, fz = (z >> 10) & 0x3FF;
  int lower = lerp_10(lerp_20(v000, v100, fx), lerp_20(v010, v110, fx), fy);
  int upper = lerp_10(lerp_20(v001, v101, fx), lerp_20(v011, v111, fx), fy);
  return lerp_10(lower, upper, fz) >> 20;
}

// Interpolation in doubles, axis after axis: 16-bit slice stacks. Differences of voxels are
// taken in integers.
inline double lerp_voxels(int left, int right, double f) {
  return static_cast<double>(left) + static_cast<double>(right - left) * f;
}
inline double lerp(double from, double to, double f) { return (to - from) * f + from; }
inline double fraction_20(int fixed) { return (fixed & 0xFFFFF) * 0x1p-20; }
inline double trilinear_real(int x, int y, int z, const Cell& cell) {
  const auto [v000, v100, v010, v110, v001, v101, v011, v111] = cell;
  double fx = fraction_20(x), fy = fraction_20(y), fz = fraction_20(z);
  double lower = lerp(lerp_voxels(v000, v100, fx), lerp_voxels(v010, v110, fx), fy);
  double upper = lerp(lerp_voxels(v001, v101, fx), lerp_voxels(v011, v111, fx), fy);
  return lerp(lower, upper, fz);
}

// One-bit volumes. The count subtracts the byte number itself, not eight times it, and works
// modulo 32: beyond column 8 most columns read 0. Never x & 7.
inline int bit_shift(int x) { return (7 - (x - (x >> 3))) & 31; }
inline uint8_t bit_of(uint8_t byte, int shift) { return (static_cast<uint32_t>(byte) >> shift) & 1; }

}  // namespace
}  // namespace zox::ZOX_SET
