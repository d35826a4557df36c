// Three-vectors and the 3 x 3 matrices that take voxel steps to millimetres.
#pragma once

#include <array>
#include <cmath>

namespace render {

struct Vec3 {
  std::array<double, 3> at{};
  double& operator[](int axis) { return at[static_cast<size_t>(axis)]; }
  double operator[](int axis) const { return at[static_cast<size_t>(axis)]; }
};

inline Vec3 vec3(const double* v) { return {{v[0], v[1], v[2]}}; }
inline Vec3 operator+(const Vec3& a, const Vec3& b) { return {{a[0] + b[0], a[1] + b[1], a[2] + b[2]}}; }
inline Vec3 operator-(const Vec3& a, const Vec3& b) { return {{a[0] - b[0], a[1] - b[1], a[2] - b[2]}}; }
inline Vec3 operator*(const Vec3& a, double s) { return {{a[0] * s, a[1] * s, a[2] * s}}; }
inline double dot(const Vec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
inline double length(const Vec3& a) { return std::sqrt(dot(a, a)); }

inline Vec3 cross(const Vec3& a, const Vec3& b) {
  return {{a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]}};
}

// Column c is where one step along voxel axis c leads.
using Axes = std::array<Vec3, 3>;

inline double determinant(const Axes& axes) { return dot(axes[0], cross(axes[1], axes[2])); }

inline Vec3 to_millimetres(const Axes& axes, const Vec3& voxels) {
  return axes[0] * voxels[0] + axes[1] * voxels[1] + axes[2] * voxels[2];
}

// The rows of the inverse of to_millimetres, by Cramer's rule; the axes must not be coplanar.
inline Axes inverse_rows(const Axes& axes) {
  const double factor = 1 / determinant(axes);
  return {cross(axes[1], axes[2]) * factor, cross(axes[2], axes[0]) * factor,
          cross(axes[0], axes[1]) * factor};
}

inline Vec3 to_voxels(const Axes& rows, const Vec3& millimetres) {
  return {{dot(rows[0], millimetres), dot(rows[1], millimetres), dot(rows[2], millimetres)}};
}

}  // namespace render
