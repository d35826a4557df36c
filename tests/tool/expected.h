// What a picture must show, computed ray by ray and sample by sample in plain doubles and without any
// code of the renderer or the library.
#pragma once

#include <limits>
#include <vector>

#include "files.h"

enum class Reduction { kMax, kMin, kMean, kAbsMax };

struct Scene {
  double azimuth = 0;
  double elevation = 0;
  bool perspective = false;
  bool nearest = false;
  Reduction reduction = Reduction::kMax;
  int width = 64;
  int height = 64;
  double step = 0.5;
  double near = -std::numeric_limits<double>::infinity();
  double far = std::numeric_limits<double>::infinity();
};

inline constexpr double kNoSample = -std::numeric_limits<double>::infinity();

struct ExpectedPixel {
  double value = kNoSample;
  int depth = 0;  // number of the sample that gave it, the nearest to the viewer of equals
};

// What becomes of the samples of every pixel's ray, before any rounding.
std::vector<ExpectedPixel> expected_pixels(const TestVolume& volume, const Scene& scene);

// Their values alone; kNoSample where there is none.
std::vector<double> expected_values(const TestVolume& volume, const Scene& scene);

// The grey level of a value: 0 at the window's lower edge, 255 at the upper one, truncated between.
int expected_grey(double value, double center, double width);
