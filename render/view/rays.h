// Which samples belong to which pixel, on a grid that every sampling operation keeps exactly.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>

#include "interface.h"
#include "view/camera.h"
#include "view/lanes.h"
#include "volume/frame.h"

namespace render {

// Positions count units of 2^-20 voxel, and are whole numbers in doubles: sums of starts and steps are exact,
// however a ray is split, from wherever it is counted and in whichever order it is walked.
inline constexpr double kGrid = 1048576;

// The nearest whole number (halves to even) of anything below 2^51 in magnitude.
inline double to_whole(double v) {
  constexpr double kShift = 6755399441055744.0;  // 1.5 * 2^52
  return (v + kShift) - kShift;
}

// More samples from the center than this are refused: doubles would no longer hold quotients of positions
// exactly.
inline constexpr double kFarSample = 1 << 24;

// The rays of a view. The third coordinate of a line counts units of the frame's depth.
class Rays {
 public:
  Rays(const Camera& camera, const Frame& frame, const zox_render_view& view);

  Line line(double column, double row) const;
  // Those of a tile, the same to the last bit.
  void lines(const Lanes<double>& columns, const Lanes<double>& rows, LineLanes& lines) const;
  // The samples that the slab and the eye leave.
  const Stretch& depths() const { return depths_; }
  // What is added to a sample's number when it is told: not 0 for a single slice only.
  int number_offset() const { return number_offset_; }

 private:
  void take_slab(const zox_render_view& view, double step);

  bool perspective_;
  double step_, pixel_, eye_distance_, reach_;  // millimetres; reach: from the eye to sample 0
  Vec3 center_, right_, up_, forward_;          // columns, rows and units, of a millimetre each
  double half_width_, half_height_;
  Stretch depths_;
  int number_offset_ = 0;
};

}  // namespace render
