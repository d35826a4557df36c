// PNG pictures and animations, in memory.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace zox::output {

// 256 colours, red, green and blue.
using Palette = std::array<std::array<uint8_t, 3>, 256>;

struct Image {
  int width = 0, height = 0;
  const uint8_t* grey = nullptr;                           // 8 bits, rows from the top without gaps; or
  const uint16_t* deep = nullptr;                          // 16 bits
  const Palette* palette = nullptr;                        // of `grey`; null: greys
  std::vector<std::pair<std::string, std::string>> texts;  // keywords and what they say, in Latin-1
};

// From 0, which only stores, to 12, which takes very long; 1 is as quick as reading the volume.
inline constexpr int kLeastLevel = 0, kDefaultLevel = 1, kMostLevel = 12;

// Throws std::bad_alloc.
std::string encode_png(const Image& image, int level);

// A PNG whose frames play for ever where animations are known; elsewhere the first one shows.
class Animation {
 public:
  // All frames are as large and have the palette of the first.
  Animation(int frames, int milliseconds, int level);
  void add(const Image& frame);
  // After all frames.
  std::string finish();

 private:
  int frames_, milliseconds_, level_;
  uint32_t sequence_ = 0;
  std::string bytes_;
};

}  // namespace zox::output
