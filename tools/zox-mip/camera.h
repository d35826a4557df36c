// The viewer: which ray belongs to which pixel.
#pragma once

#include "options.h"
#include "vec3.h"

namespace zox_mip {

// A point of a ray at depth t, in millimetres from the middle of the volume, is middle + t * direction.
// Depth 0 is the plane (orthographic) or the sphere around the eye (perspective) through the volume's
// middle; depth grows away from the viewer.
struct Ray {
  Vec3 middle;
  Vec3 direction;  // of length 1
};

class Camera {
 public:
  // Looks at the middle of a box of the given size (in voxels), just near enough that all of it is in
  // the picture.
  Camera(const View& view, Projection projection, int width, int height, const Axes& axes, const Vec3& box);

  Ray ray(int column, int row) const;

 private:
  Vec3 forward_;
  Vec3 right_;
  Vec3 up_;
  double pitch_ = 0;     // millimetres from pixel to pixel, at depth 0
  double distance_ = 0;  // of the eye from the middle of the volume; perspective only
  Projection projection_;
  int width_;
  int height_;
};

}  // namespace zox_mip
