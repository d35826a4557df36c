// What is encoded is what other programs read.
#include <gtest/gtest.h>

#include <random>

#include "arrays.h"
#include "picture.h"
#include "picture_file.h"
#include "run.h"

namespace zox::output {
namespace {

constexpr int kWidth = 31;
constexpr int kHeight = 17;

class EncodeTest : public ToolTest {
 protected:
  template <class Number>
  static std::vector<Number> random_numbers(unsigned seed) {
    std::mt19937 random(seed);
    std::vector<Number> numbers(kWidth * kHeight);
    for (Number& number : numbers) number = static_cast<Number>(random());
    return numbers;
  }
  static Image image() {
    Image image;
    image.width = kWidth;
    image.height = kHeight;
    return image;
  }
};

TEST_F(EncodeTest, GreyAtEveryLevel) {
  const auto grey = random_numbers<uint8_t>(1);
  Image one = image();
  one.grey = grey.data();
  for (const auto& [width, height] : {std::pair{kWidth, kHeight}, {1, 527}, {527, 1}})
    for (int level = kLeastLevel; level <= kMostLevel; ++level) {
      one.width = width;
      one.height = height;
      write_text(path("p.png"), encode_png(one, level));
      const Picture picture = read_picture(path("p.png"));
      EXPECT_EQ(picture.width, width);
      EXPECT_EQ(picture.grey, grey) << level;
    }
}

TEST_F(EncodeTest, SixteenBitsWithWords) {
  const auto deep = random_numbers<uint16_t>(2);
  Image one = image();
  one.deep = deep.data();
  one.texts = {{"Description", "what the numbers mean"}};
  write_text(path("p.png"), encode_png(one, 1));
  const Deep read = read_deep(path("p.png"));
  EXPECT_EQ(read.pixels, deep);
  EXPECT_EQ(read.description, "what the numbers mean");
}

TEST_F(EncodeTest, Colours) {
  const auto grey = random_numbers<uint8_t>(3);
  Palette palette;
  for (size_t i = 0; i < 256; ++i)
    palette[i] = {static_cast<uint8_t>(i), static_cast<uint8_t>(255 - i), static_cast<uint8_t>(i * 7)};
  Image one = image();
  one.grey = grey.data();
  one.palette = &palette;
  write_text(path("p.png"), encode_png(one, 1));
  const std::vector<uint8_t> colours = read_colours(path("p.png"));
  ASSERT_EQ(colours.size(), 3 * grey.size());
  for (size_t i = 0; i < grey.size(); ++i)
    for (size_t part = 0; part < 3; ++part) EXPECT_EQ(colours[3 * i + part], palette[grey[i]][part]);
}

// The packed pixels of each frame are those of a picture of its own; the control chunks are as they must be.
TEST_F(EncodeTest, Animation) {
  constexpr int kFrames = 4;
  Animation animation(kFrames, 40, 1);
  std::vector<std::string> packed;
  std::vector<uint8_t> first;
  for (unsigned i = 0; i < kFrames; ++i) {
    const auto grey = random_numbers<uint8_t>(i);
    if (i == 0) first = grey;
    Image frame = image();
    frame.grey = grey.data();
    animation.add(frame);
    write_text(path("f.png"), encode_png(frame, 1));
    packed.push_back(read_chunks(path("f.png")).at(1).content);
  }
  write_text(path("a.png"), animation.finish());
  EXPECT_EQ(read_picture(path("a.png")).grey, first);  // what programs see that know no animations
  const auto numbered = [](char number) { return std::string("\0\0\0", 3) + number; };
  const std::string control("\0\0\0\x1F\0\0\0\x11\0\0\0\0\0\0\0\0\0\x28\x03\xE8\0\0", 22);
  std::vector<std::pair<std::string, std::string>> wanted = {
      {"acTL", std::string("\0\0\0\4\0\0\0\0", 8)}, {"fcTL", numbered(0) + control}, {"IDAT", packed[0]}};
  for (size_t i = 1; i < kFrames; ++i) {
    wanted.push_back({"fcTL", numbered(static_cast<char>(2 * i - 1)) + control});
    wanted.push_back({"fdAT", numbered(static_cast<char>(2 * i)) + packed[i]});
  }
  const std::vector<Chunk> chunks = read_chunks(path("a.png"));
  ASSERT_EQ(chunks.size(), wanted.size() + 2);
  for (size_t i = 0; i < wanted.size(); ++i) {
    EXPECT_EQ(chunks[i + 1].type, wanted[i].first);
    EXPECT_EQ(chunks[i + 1].content, wanted[i].second) << i;
  }
}

TEST_F(EncodeTest, NumbersForNumPy) {
  const auto shorts = random_numbers<int16_t>(4);
  const std::vector<float> floats(shorts.begin(), shorts.end());
  Numbers numbers;
  numbers.width = kWidth;
  numbers.height = kHeight;
  numbers.shorts = shorts.data();
  write_text(path("n.npy"), encode_npy(numbers));
  EXPECT_EQ(read_npy(path("n.npy"), "<i2"),
            std::string(reinterpret_cast<const char*>(shorts.data()), shorts.size() * 2));
  EXPECT_NE(read_text(path("n.npy")).find("'shape': (17, 31)"), std::string::npos);
  numbers.shorts = nullptr;
  numbers.floats = floats.data();
  write_text(path("n.npy"), encode_npy(numbers));
  EXPECT_EQ(read_floats(path("n.npy")), floats);
}

}  // namespace
}  // namespace zox::output
