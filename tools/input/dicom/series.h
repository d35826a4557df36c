// Series: which frames make one volume, in which order, and where its slices lie.
#pragma once

#include <string>
#include <vector>

#include "dicom_frame.h"

namespace zox::input::dicom {

struct Series {
  std::vector<Frame> frames;  // until arranged: in no order
  uint64_t voxels() const {
    return frames.empty() ? 0 : uint64_t(frames[0].columns) * uint64_t(frames[0].rows) * frames.size();
  }
};

// Frames of one series, size, orientation, pixel spacing and kind of pixel; what differs in any (a
// localiser among slices) is a series of its own. In the order of the series' numbers.
std::vector<Series> split_into_series(std::vector<Frame> frames);

// The slices of a volume from one end to the other.
struct Arrangement {
  std::vector<Frame> frames;       // ascending along the normal of the slices
  std::array<Vector, 3> axes{};    // millimetres a voxel; axes[2] leads from slice to slice and is skewed
                                   // where the gantry was tilted
  Vector origin{};                 // millimetres, the first pixel of frames[0]
  std::vector<double> positions;   // uneven slices only: millimetres along axes[2], from frames[0]
  std::vector<std::string> notes;  // sentences on what was found
};

// Throws std::runtime_error with a sentence where the slices make no volume.
Arrangement arrange(const Series& series);

// "1: CT, 108 slices of 256 x 256, 1.5 mm apart, Head" ...
std::string describe(const Series& series, int number);

}  // namespace zox::input::dicom
