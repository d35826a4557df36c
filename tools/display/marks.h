// Orientation letters and a scale bar on a finished picture.
#pragma once

#include <zox_render.h>

#include <cstdint>
#include <string>

namespace zox::display {

// 8-bit grey pixels, rows from the top without gaps.
struct Image {
  uint8_t* pixels;
  int width, height;
};

// Which way of the patient a direction leads: R or L, A or P, H or F, the nearest axis first, another one
// behind it where the direction leans to it by more than 20 degrees: "A", "LA", "HP" ...
std::string direction_letters(const double direction[3]);

// The longest of 1, 2, 5, 10 ... millimetres that is no longer than a quarter of the picture's width.
double scale_bar_length(double pixel_size, int width);

// Letters in the middle of each edge, white on a dark rim, and in the lower right corner a bar of
// scale_bar_length with its length ("50 mm"). In perspective the bar holds at the centre's distance.
void draw_marks(Image image, const zox_render_geometry& geometry);

}  // namespace zox::display
