#include "volume/frame.h"

#include <algorithm>

namespace render {
namespace {

void check_axes(const zox_render_array& record, const Axes& axes) {
  for (int a = 0; a < 3; ++a) {
    const double l = length(axes[static_cast<size_t>(a)]);
    require(std::isfinite(l) && l >= 1e-9 && l <= 1e9,
            "The length of each axis must be 1e-9 to 1e9 millimetres.");
    require(std::isfinite(record.origin[a]) && std::abs(record.origin[a]) <= 1e12,
            "The origin must be finite and within 1e12 millimetres.");
  }
  const double volume = determinant(axes) / (length(axes[0]) * length(axes[1]) * length(axes[2]));
  require(std::abs(volume) >= 1e-6, "The axes are coplanar.");
}

std::vector<double> checked_positions(const double* positions, int count) {
  std::vector<double> checked(positions, positions + count);
  for (size_t k = 0; k < checked.size(); ++k) {
    require(std::isfinite(checked[k]) && std::abs(checked[k]) <= 1e9,
            "The slice positions must be finite and within 1e9 millimetres.");
    require(k == 0 || checked[k] - checked[k - 1] >= 1e-9, "The slice positions must ascend strictly.");
  }
  return checked;
}

// The third axis as a unit of the given length, the first slice at the origin.
void take_positions(const std::vector<double>& positions, double in_plane, Frame& frame) {
  const Vec3 direction = frame.axes[2] * (1 / length(frame.axes[2]));
  frame.regions = even_regions(positions);
  double unit = in_plane;
  if (frame.regions.size() == 1 && positions.size() > 1) {
    unit = (positions.back() - positions.front()) / static_cast<double>(positions.size() - 1);
  } else if (positions.size() > 1) {
    for (const Region& r : frame.regions) {
      const double gap = (r.high - r.low) / (r.last - r.first);
      unit = &r == &frame.regions[0] ? gap : std::min(unit, gap);
    }
  }
  for (Region& r : frame.regions) {
    r.low = (r.low - positions.front()) / unit;
    r.high = (r.high - positions.front()) / unit;
  }
  if (frame.even()) frame.regions[0].high = static_cast<double>(positions.size()) - 1;
  frame.axes[2] = direction * unit;
  frame.origin = frame.origin + direction * positions.front();
}

}  // namespace

double Frame::smallest_spacing() const {
  return std::min({length(axes[0]), length(axes[1]), length(axes[2])});
}

Vec3 Frame::middle() const {
  return {{(size[0] - 1) / 2.0, (size[1] - 1) / 2.0, (regions.front().low + regions.back().high) / 2}};
}

double Frame::outer_low() const { return regions.front().low - 0.5 / regions.front().slices_per_unit(); }
double Frame::outer_high() const { return regions.back().high + 0.5 / regions.back().slices_per_unit(); }

double Frame::slice_of_unit(double unit) const {
  const Region* region = &regions.front();
  while (region != &regions.back() && unit > region->high) ++region;
  return region->first + (unit - region->low) * region->slices_per_unit();
}

double Frame::unit_of_slice(double slice) const {
  const Region* region = &regions.front();
  while (region != &regions.back() && slice > region->last) ++region;
  return region->low + (slice - region->first) / region->slices_per_unit();
}

Frame checked_frame(const zox_render_array& record, const Size3& whole) {
  Frame frame;
  frame.size = whole;
  for (size_t a = 0; a < 3; ++a) frame.axes[a] = vec3(record.axes[a]);
  check_axes(record, frame.axes);
  frame.origin = vec3(record.origin);
  frame.regions = {{0, whole[2] - 1, 0, static_cast<double>(whole[2] - 1)}};
  if (record.positions)
    take_positions(checked_positions(record.positions, whole[2]),
                   std::min(length(frame.axes[0]), length(frame.axes[1])), frame);
  frame.rows = inverse_rows(frame.axes);
  return frame;
}

}  // namespace render
