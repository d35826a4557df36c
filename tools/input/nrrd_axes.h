// What the axes of an NRRD file mean.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "header_lines.h"

namespace zox::input {

struct NrrdAxis {
  int64_t size = 0, stride = 0;
  bool spatial = true;
  std::array<double, 3> direction{};
};

// In the order of the file, the first the fastest.
std::vector<NrrdAxis> read_nrrd_axes(const HeaderLines& lines);

// The first vector of a field, such as "(1,0,0)"; of a picture in a plane "(1,0)" will do. None where the
// field is empty.
std::optional<std::array<double, 3>> first_nrrd_vector(const HeaderLines& lines, const std::string& key);

}  // namespace zox::input
