// A grey picture as it stands in a PNG file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct Picture {
  int width = 0;
  int height = 0;
  std::vector<uint8_t> grey;

  int at(int column, int row) const { return grey[static_cast<size_t>(row * width + column)]; }
};

// Fails the running test unless the file is an 8-bit grey PNG.
Picture read_picture(const std::string& path);
