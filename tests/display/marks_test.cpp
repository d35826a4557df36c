// Marks, read back from the pixels of the picture.
#include <display/marks.h>
#include <display/presets.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zox::display {
namespace {

constexpr uint8_t kGround = 90;

struct Picture {
  int width, height;
  std::vector<uint8_t> pixels;

  Picture(int w, int h) : width(w), height(h), pixels(size_t(w) * size_t(h), kGround) {}
  Image image() { return {pixels.data(), width, height}; }
  uint8_t at(int x, int y) const { return pixels[size_t(y) * size_t(width) + size_t(x)]; }

  // White as '#', anything else as '.', every `dot` pixels.
  std::string text(int left, int top, int columns, int rows, int dot) const {
    std::string drawn;
    for (int y = 0; y < rows; ++y) {
      for (int x = 0; x < columns; ++x) drawn += at(left + x * dot, top + y * dot) == 255 ? '#' : '.';
      drawn += '\n';
    }
    return drawn;
  }
};

zox_render_geometry from_the_front(double pixel_size) {
  zox_render_geometry geometry{};
  geometry.right[0] = 1;    // the patient's left
  geometry.up[2] = 1;       // the head
  geometry.forward[1] = 1;  // the back
  geometry.pixel_size = pixel_size;
  return geometry;
}

const char* const kH =
    "#...#\n"
    "#...#\n"
    "#...#\n"
    "#####\n"
    "#...#\n"
    "#...#\n"
    "#...#\n";
const char* const kL =
    "#....\n"
    "#....\n"
    "#....\n"
    "#....\n"
    "#....\n"
    "#....\n"
    "#####\n";

TEST(Marks, LettersStandInTheMiddleOfTheEdges) {
  Picture picture(256, 256);
  draw_marks(picture.image(), from_the_front(1));
  EXPECT_EQ(picture.text(125, 3, 5, 7, 1), kH);
  EXPECT_EQ(picture.text(256 - 3 - 5, 124, 5, 7, 1), kL);
}

TEST(Marks, GrowWithThePicture) {
  Picture picture(1024, 512);
  draw_marks(picture.image(), from_the_front(1));
  EXPECT_EQ(picture.text((1024 - 10) / 2, 6, 5, 7, 2), kH);
}

TEST(Marks, HaveADarkRim) {
  Picture picture(256, 256);
  draw_marks(picture.image(), from_the_front(1));
  EXPECT_EQ(picture.at(124, 3), 0);
  EXPECT_EQ(picture.at(125, 2), 0);
  EXPECT_EQ(picture.at(122, 3), kGround);
}

// A quarter of 256 pixels of 0.8 mm is 51.2 mm: the bar is 50 mm, 62.5 pixels, drawn as 63.
TEST(Marks, TheBarIsAsLongAsItSays) {
  Picture picture(256, 256);
  draw_marks(picture.image(), from_the_front(0.8));
  const int row = 256 - 3 - 1;
  int white = 0;  // right of the letter at the lower edge
  for (int x = 160; x < 256; ++x) white += picture.at(x, row) == 255;
  EXPECT_EQ(white, 63);
  EXPECT_EQ(picture.at(256 - 3 - 1, row), 255);
  EXPECT_EQ(picture.at(256 - 3 - 63, row), 255);
  EXPECT_EQ(picture.text(256 - 3 - 5 * 6 + 1, row - 10, 11, 7, 1),
            "#####..###.\n"
            "#.....#...#\n"
            "####..#..##\n"
            "....#.#.#.#\n"
            "....#.##..#\n"
            "#...#.#...#\n"
            ".###...###.\n");
}

TEST(Marks, BarsAreRoundNumbersOfMillimetres) {
  EXPECT_EQ(scale_bar_length(1, 512), 100);
  EXPECT_EQ(scale_bar_length(1, 399), 50);
  EXPECT_EQ(scale_bar_length(0.5, 399), 20);
  EXPECT_DOUBLE_EQ(scale_bar_length(0.001, 512), 0.1);
}

TEST(Marks, DirectionsAreNamedByTheNearestAxes) {
  const double left[] = {1, 0, 0}, front[] = {0, -1, 0}, foot[] = {0.1, 0.2, -0.97};
  const double between[] = {-0.6, 0.8, 0};
  EXPECT_EQ(direction_letters(left), "L");
  EXPECT_EQ(direction_letters(front), "A");
  EXPECT_EQ(direction_letters(foot), "F");
  EXPECT_EQ(direction_letters(between), "PR");
}

TEST(Marks, NothingIsDrawnOutsideOfATinyPicture) {
  for (int size = 1; size < 40; ++size) {
    Picture picture(size, size);
    draw_marks(picture.image(), from_the_front(1));
  }
}

TEST(Presets, AreFoundByName) {
  ASSERT_TRUE(preset("Bone"));
  EXPECT_EQ(preset("brain")->center, 40);
  EXPECT_EQ(preset("brain")->width, 80);
  EXPECT_FALSE(preset("bones"));
  EXPECT_GE(presets().size(), 7U);
}

}  // namespace
}  // namespace zox::display
