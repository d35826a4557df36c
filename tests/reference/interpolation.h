// The three trilinear formulas. They differ on purpose in arithmetic and in rounding.
#pragma once

#include "arithmetic.h"

namespace reference {

// The eight voxels around a sample, by z, y and x offset.
struct Corners {
  int32_t at[2][2][2];
};

// 8-bit voxels of the general operations and of the blocked parallel one: 32-bit integers with
// 20 fraction bits. x keeps all 20 bits of its fraction, y and z the upper 10; differences along y
// and z lose their low 10 bits before they are weighted. Shifts floor, so a sample among nearly
// black voxels can come out as -1, which is 255 as a byte.
inline uint8_t interpolate_fixed(const Corners& v, int32_t x, int32_t y, int32_t z) {
  const int32_t fx = x & 0xFFFFF;
  const int32_t fy = (y & 0xFFFFF) >> 10;
  const int32_t fz = (z & 0xFFFFF) >> 10;
  int32_t plane[2];
  for (int l = 0; l < 2; ++l) {
    int32_t row[2];
    for (int j = 0; j < 2; ++j) {
      const int32_t left = v.at[l][j][0];
      const int32_t right = v.at[l][j][1];
      row[j] = left * (1 << 20) + (right - left) * fx;
    }
    plane[l] = row[0] + ((row[1] - row[0]) >> 10) * fy;
  }
  return static_cast<uint8_t>((plane[0] + ((plane[1] - plane[0]) >> 10) * fz) >> 20);
}

// 16-bit voxels of the general operations: doubles, all 20 bits of every fraction, truncated
// toward zero.
inline int16_t interpolate_lerp(const Corners& v, int32_t x, int32_t y, int32_t z) {
  constexpr double kUnit = 1.0 / 1048576.0;
  const double fx = (x & 0xFFFFF) * kUnit;
  const double fy = (y & 0xFFFFF) * kUnit;
  const double fz = (z & 0xFFFFF) * kUnit;
  double plane[2];
  for (int l = 0; l < 2; ++l) {
    double row[2];
    for (int j = 0; j < 2; ++j) {
      const int32_t left = v.at[l][j][0];
      row[j] = left + (v.at[l][j][1] - left) * fx;
    }
    plane[l] = (row[1] - row[0]) * fy + row[0];
  }
  return static_cast<int16_t>(truncate((plane[1] - plane[0]) * fz + plane[0]));
}

// The blocked operations in doubles: a sum of eight weighted corners. The order of the products
// and of the terms decides the last bit, and with it the truncated result.
inline int32_t interpolate_terms(const Corners& v, double fx, double fy, double fz) {
  const double gx = 1.0 - fx;
  const double gy = 1.0 - fy;
  const double gz = 1.0 - fz;
  double sum = ((gy * gx) * gz) * v.at[0][0][0];
  sum += ((gy * fx) * gz) * v.at[0][0][1];
  sum += ((gx * fy) * gz) * v.at[0][1][0];
  sum += ((gy * gx) * fz) * v.at[1][0][0];
  sum += ((fx * fy) * gz) * v.at[0][1][1];
  sum += ((gy * fx) * fz) * v.at[1][0][1];
  sum += ((gx * fy) * fz) * v.at[1][1][0];
  sum += ((fx * fy) * fz) * v.at[1][1][1];
  return truncate(sum);
}

}  // namespace reference
