// From a volume to the largest value along every pixel's ray.
#pragma once

#include <cstdint>
#include <vector>

#include "options.h"
#include "volume.h"

namespace zox_mip {

// The stored value that a pixel has when its ray takes no sample; below every display window.
inline constexpr int16_t kNothing = INT16_MIN;

struct Rendering {
  std::vector<int16_t> maxima;  // width x height, the upper row first
  int64_t samples = 0;
};

// Takes the volume's voxels over. Throws Failure.
Rendering render(Volume& volume, const Options& options, bool show_progress);

}  // namespace zox_mip
