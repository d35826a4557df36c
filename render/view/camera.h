// The viewer: what a view means in millimetres.
#pragma once

#include "interface.h"
#include "view/vec3.h"
#include "volume/frame.h"

namespace render {

struct Camera {
  bool perspective = false;
  int width = 0, height = 0;
  Vec3 right, up, forward;  // unit vectors
  Vec3 center;              // millimetres
  double pixel_size = 0;    // millimetres; in perspective at the center's distance
  double eye_distance = 0;  // millimetres
  double step = 0;          // millimetres
};

// Checks the view and looks at the volume with it.
Camera make_camera(const zox_render_view& view, const Frame& frame);

struct SineCosine {
  double sine, cosine;
};

// By additions and multiplications alone, so that every system computes the same bits; exact at right angles.
SineCosine sine_cosine(double degrees);

}  // namespace render
