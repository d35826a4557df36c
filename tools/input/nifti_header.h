// The header of NIfTI-1, NIfTI-2 and Analyze 7.5, in the numbers that a volume needs.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "voxels.h"

namespace zox::input {

struct NiftiHeader {
  bool separate = false;  // the voxels are in a file of their own
  std::array<int64_t, 8> dimensions{};
  int datatype = 0;
  bool swapped = false;
  uint64_t voxel_offset = 0;
  double slope = 1, intercept = 0;
  bool oriented = true;  // the file says how it lies in the patient
  // Millimetres in the patient's frame (left, back, up), of one voxel along each axis and of voxel 0.
  std::array<std::array<double, 3>, 3> axes{};
  std::array<double, 3> origin{};
};

// Bytes of the longest header.
inline constexpr size_t kNiftiHeaderBytes = 540;

bool is_nifti_header(const std::string& bytes);

// `path` is named in what is thrown.
NiftiHeader parse_nifti_header(const std::string& bytes, const std::string& path);

}  // namespace zox::input
