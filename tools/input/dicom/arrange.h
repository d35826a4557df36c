// Distances between the slices of a series.
#pragma once

#include <optional>

#include "series.h"

namespace zox::input::dicom {

inline double dot(const Vector& a, const Vector& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
inline Vector cross(const Vector& a, const Vector& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
inline Vector operator-(const Vector& a, const Vector& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
inline Vector operator+(const Vector& a, const Vector& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
inline Vector operator*(const Vector& a, double s) { return {a[0] * s, a[1] * s, a[2] * s}; }

// Where a frame lies along the normal of its series' slices, in millimetres.
double height(const Frame& frame, const Vector& normal);

// The middle one of the distances between neighbouring slices; none with fewer than two positions.
std::optional<double> usual_distance(const Series& series);

}  // namespace zox::input::dicom
