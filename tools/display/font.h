// A small fixed font: the letters and digits that marks need.
#pragma once

#include <cstdint>

namespace zox::display {

inline constexpr int kGlyphWidth = 5, kGlyphHeight = 7;

// Rows from the top, bit 4 the leftmost pixel. A character that the font lacks is blank.
const uint8_t* glyph(char character);

}  // namespace zox::display
