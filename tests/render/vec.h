// Three numbers at a time, for the plain renderer and the scenes.
#pragma once

#include <array>
#include <cmath>

namespace zox_test {

using Vec = std::array<double, 3>;
using Matrix = std::array<Vec, 3>;  // rows

inline Vec operator+(const Vec& a, const Vec& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
inline Vec operator-(const Vec& a, const Vec& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
inline Vec operator*(const Vec& a, double s) { return {a[0] * s, a[1] * s, a[2] * s}; }
inline double dot(const Vec& a, const Vec& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
inline double length(const Vec& a) { return std::sqrt(dot(a, a)); }
inline Vec unit(const Vec& a) { return a * (1 / length(a)); }
inline Vec cross(const Vec& a, const Vec& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

// The coordinates of p in the frame of three vectors: p = a * result[0] + b * result[1] + c * result[2].
inline Vec coordinates(const Vec& a, const Vec& b, const Vec& c, const Vec& p) {
  const double volume = dot(a, cross(b, c));
  return {dot(p, cross(b, c)) / volume, dot(p, cross(c, a)) / volume, dot(p, cross(a, b)) / volume};
}

}  // namespace zox_test
