#include "marks.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include "font.h"

namespace zox::display {
namespace {

constexpr uint8_t kWhite = 255, kRim = 0;
// sin 20 degrees.
constexpr double kLeaning = 0.3420201433256687;

// Marks grow with the picture: whole pixels a dot of the font.
int dot_size(const Image& image) { return std::max(1, std::min(image.width, image.height) / 256); }

void fill(const Image& image, int left, int top, int width, int height, uint8_t value) {
  for (int y = std::max(top, 0); y < std::min(top + height, image.height); ++y)
    for (int x = std::max(left, 0); x < std::min(left + width, image.width); ++x)
      image.pixels[static_cast<size_t>(y) * static_cast<size_t>(image.width) + static_cast<size_t>(x)] =
          value;
}

int text_width(const std::string& text, int dot) {
  return (static_cast<int>(text.size()) * (kGlyphWidth + 1) - 1) * dot;
}

// Every dot of a text, grown by `rim` pixels on all sides.
void draw_dots(const Image& image, const std::string& text, int left, int top, int dot, int rim,
               uint8_t value) {
  for (size_t c = 0; c < text.size(); ++c)
    for (int row = 0; row < kGlyphHeight; ++row)
      for (int column = 0; column < kGlyphWidth; ++column) {
        if (!(glyph(text[c])[row] >> (kGlyphWidth - 1 - column) & 1)) continue;
        const int x = left + (static_cast<int>(c) * (kGlyphWidth + 1) + column) * dot;
        fill(image, x - rim, top + row * dot - rim, dot + 2 * rim, dot + 2 * rim, value);
      }
}

void draw_text(const Image& image, const std::string& text, int left, int top, int dot) {
  draw_dots(image, text, left, top, dot, dot, kRim);
  draw_dots(image, text, left, top, dot, 0, kWhite);
}

void draw_letters(const Image& image, const zox_render_geometry& geometry, int dot) {
  const int margin = 3 * dot, height = kGlyphHeight * dot;
  double left[3], down[3];
  for (int axis = 0; axis < 3; ++axis) {
    left[axis] = -geometry.right[axis];
    down[axis] = -geometry.up[axis];
  }
  const int middle = (image.height - height) / 2;
  const std::string right_letters = direction_letters(geometry.right);
  const std::string up_letters = direction_letters(geometry.up), down_letters = direction_letters(down);
  draw_text(image, direction_letters(left), margin, middle, dot);
  draw_text(image, right_letters, image.width - margin - text_width(right_letters, dot), middle, dot);
  draw_text(image, up_letters, (image.width - text_width(up_letters, dot)) / 2, margin, dot);
  draw_text(image, down_letters, (image.width - text_width(down_letters, dot)) / 2,
            image.height - margin - height, dot);
}

void draw_bar(const Image& image, double pixel_size, int dot) {
  const double length = scale_bar_length(pixel_size, image.width);
  const int pixels = std::max(1, static_cast<int>(std::lround(length / pixel_size)));
  const int margin = 3 * dot;
  const int left = image.width - margin - pixels, top = image.height - margin - dot;
  fill(image, left - dot, top - dot, pixels + 2 * dot, 3 * dot, kRim);
  fill(image, left, top, pixels, dot, kWhite);
  char text[32];
  std::snprintf(text, sizeof text, "%g mm", length);
  draw_text(image, text, image.width - margin - text_width(text, dot), top - (kGlyphHeight + 3) * dot, dot);
}

}  // namespace

std::string direction_letters(const double direction[3]) {
  struct Part {
    double size;
    char letter;
  };
  std::vector<Part> parts = {{std::abs(direction[0]), direction[0] > 0 ? 'L' : 'R'},
                             {std::abs(direction[1]), direction[1] > 0 ? 'P' : 'A'},
                             {std::abs(direction[2]), direction[2] > 0 ? 'H' : 'F'}};
  std::stable_sort(parts.begin(), parts.end(), [](const Part& a, const Part& b) { return a.size > b.size; });
  std::string letters(1, parts[0].letter);
  if (parts[1].size > kLeaning) letters += parts[1].letter;
  return letters;
}

double scale_bar_length(double pixel_size, int width) {
  const double most = pixel_size * width / 4;
  const double ten = std::pow(10, std::floor(std::log10(most)));
  if (5 * ten <= most) return 5 * ten;
  return 2 * ten <= most ? 2 * ten : ten;
}

void draw_marks(Image image, const zox_render_geometry& geometry) {
  const int dot = dot_size(image);
  draw_letters(image, geometry, dot);
  draw_bar(image, geometry.pixel_size, dot);
}

}  // namespace zox::display
