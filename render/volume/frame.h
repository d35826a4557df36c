// Where the voxels of a volume lie: between millimetres, units of depth through the slices, and slices.
#pragma once

#include <vector>

#include "view/vec3.h"
#include "volume/array.h"
#include "volume/regions.h"

namespace render {

// The third coordinate of a point counts units: slices where these are even, otherwise the smallest gap.
// Column x, row y and unit u lie at origin + axes * (x, y, u). Even slices are one region whose unit is
// a slice.
struct Frame {
  Size3 size{};         // of the whole
  Axes axes{}, rows{};  // rows: the inverse
  Vec3 origin;
  std::vector<Region> regions;  // low and high in units; never empty

  bool even() const { return regions.size() == 1; }
  double smallest_spacing() const;
  // The middle between the centres of the corner voxels, in columns, rows and units.
  Vec3 middle() const;
  // Outer faces of the first and the last slice, in units: half of a gap beyond their centres.
  double outer_low() const;
  double outer_high() const;
  // A position among the slices, going on beyond the ends as within the last region.
  double slice_of_unit(double unit) const;
  double unit_of_slice(double slice) const;
  Vec3 point(const Vec3& column_row_unit) const { return origin + to_millimetres(axes, column_row_unit); }
};

Frame checked_frame(const zox_render_array& record, const Size3& whole);

}  // namespace render
