// What a picture must show, computed ray by ray and sample by sample in plain doubles and without any
// code of the renderer or the library.
#pragma once

#include <limits>
#include <vector>

#include "files.h"

struct Scene {
  double azimuth = 0;
  double elevation = 0;
  bool perspective = false;
  bool nearest = false;
  bool stack = false;
  int width = 64;
  int height = 64;
  double step = 0.5;
  double near = -std::numeric_limits<double>::infinity();
  double far = std::numeric_limits<double>::infinity();
};

inline constexpr double kNoSample = -std::numeric_limits<double>::infinity();

// The largest sample of every pixel's ray, before any rounding; kNoSample where there is none.
std::vector<double> expected_maxima(const TestVolume& volume, const Scene& scene);

// The grey level of a whole value, as window/level is documented (into 0 .. 255).
int expected_grey(double value, int center, int width);
