// 8-bit grey pictures as the page gets them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zox::view {

// Both throw std::bad_alloc when memory cannot be had.
std::string encode_png(int width, int height, const std::vector<uint8_t>& grey);
std::string encode_jpeg(int width, int height, const std::vector<uint8_t>& grey, int quality);

}  // namespace zox::view
