// Pictures of numbers: NumPy's NPY and NRRD, in memory.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace zox::output {

// Rows from the top without gaps: 16-bit integers or, where `shorts` is null, 32-bit floats.
struct Numbers {
  int width = 0, height = 0;
  const int16_t* shorts = nullptr;
  const float* floats = nullptr;
};

std::string encode_npy(const Numbers& numbers);

// `meaning`: keys and values of the header.
std::string encode_nrrd(const Numbers& numbers,
                        const std::vector<std::pair<std::string, std::string>>& meaning);

}  // namespace zox::output
