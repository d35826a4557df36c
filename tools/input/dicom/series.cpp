#include "series.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <stdexcept>
#include <tuple>

#include "arrange.h"

namespace zox::input::dicom {
namespace {

// Directions and spacings are decimal texts, rounded by whoever wrote them.
constexpr double kDirectionTolerance = 1e-3;
constexpr double kSpacingTolerance = 1e-4;

bool near(const Vector& a, const Vector& b, double tolerance) {
  return std::abs(a[0] - b[0]) <= tolerance && std::abs(a[1] - b[1]) <= tolerance &&
         std::abs(a[2] - b[2]) <= tolerance;
}

bool belong_together(const Frame& a, const Frame& b) {
  return a.columns == b.columns && a.rows == b.rows && a.pixel == b.pixel &&
         near(a.along_row, b.along_row, kDirectionTolerance) &&
         near(a.along_column, b.along_column, kDirectionTolerance) &&
         std::abs(a.spacing[0] - b.spacing[0]) <= kSpacingTolerance * a.spacing[0] &&
         std::abs(a.spacing[1] - b.spacing[1]) <= kSpacingTolerance * a.spacing[1];
}

std::string millimetres(double length) {
  char text[32];
  std::snprintf(text, sizeof text, "%.4g mm", length);
  return text;
}

}  // namespace

std::vector<Series> split_into_series(std::vector<Frame> frames) {
  // The files' names decide where headers do not, so that a list is the same on every machine.
  std::sort(frames.begin(), frames.end(), [](const Frame& a, const Frame& b) {
    return std::tie(a.series_number, a.series_uid, a.path, a.index) <
           std::tie(b.series_number, b.series_uid, b.path, b.index);
  });
  std::vector<Series> all;
  size_t first_of_uid = 0;
  for (Frame& frame : frames) {
    if (all.empty() || all.back().frames[0].series_uid != frame.series_uid) first_of_uid = all.size();
    size_t s = first_of_uid;
    while (s < all.size() && !belong_together(all[s].frames[0], frame)) ++s;
    if (s == all.size()) all.emplace_back();
    all[s].frames.push_back(std::move(frame));
  }
  return all;
}

std::string describe(const Series& series, int number) {
  const Frame& first = series.frames[0];
  std::string text = std::to_string(number) + ": ";
  text += first.modality.empty() ? "unknown modality" : first.modality;
  text += ", " + std::to_string(series.frames.size()) +
          (series.frames.size() == 1 ? " slice of " : " slices of ") + std::to_string(first.columns) + " x " +
          std::to_string(first.rows);
  if (const std::optional<double> apart = usual_distance(series))
    text += ", " + millimetres(*apart) + " apart";
  if (!first.description.empty()) text += ", " + first.description;
  return text;
}

}  // namespace zox::input::dicom
