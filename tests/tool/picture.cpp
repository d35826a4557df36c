#include "picture.h"

#include <gtest/gtest.h>
#include <png.h>
#include <zlib.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <sstream>

#include "run.h"

namespace {

uint32_t number_at(const std::string& bytes, size_t at) {
  uint32_t number = 0;
  for (size_t i = 0; i < 4; ++i) number = number << 8 | static_cast<unsigned char>(bytes[at + i]);
  return number;
}

// The value behind "key:=" in a header.
std::string value_of(const std::string& header, const std::string& key) {
  const size_t at = header.find("\n" + key + ":=");
  EXPECT_NE(at, std::string::npos) << key;
  const size_t begin = at + key.size() + 3;
  return header.substr(begin, header.find('\n', begin) - begin);
}

}  // namespace

Picture read_picture(const std::string& path) {
  Picture picture;
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_file(&image, path.c_str())) {
    ADD_FAILURE() << path << ": " << image.message;
    return picture;
  }
  EXPECT_EQ(image.format, static_cast<png_uint_32>(PNG_FORMAT_GRAY)) << path;
  image.format = PNG_FORMAT_GRAY;
  picture.width = static_cast<int>(image.width);
  picture.height = static_cast<int>(image.height);
  picture.grey.resize(PNG_IMAGE_SIZE(image));
  EXPECT_TRUE(png_image_finish_read(&image, nullptr, picture.grey.data(), 0, nullptr)) << image.message;
  return picture;
}

std::vector<uint8_t> read_colours(const std::string& path) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  EXPECT_TRUE(png_image_begin_read_from_file(&image, path.c_str())) << path << ": " << image.message;
  image.format = PNG_FORMAT_RGB;
  std::vector<uint8_t> colours(PNG_IMAGE_SIZE(image));
  EXPECT_TRUE(png_image_finish_read(&image, nullptr, colours.data(), 0, nullptr)) << image.message;
  return colours;
}

Deep read_deep(const std::string& path) {
  Deep deep;
  FILE* file = std::fopen(path.c_str(), "rb");
  EXPECT_NE(file, nullptr) << path;
  if (!file) return deep;
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  if (setjmp(png_jmpbuf(png))) {
    ADD_FAILURE() << path << " is no PNG";
  } else {
    png_init_io(png, file);
    png_read_png(png, info, PNG_TRANSFORM_SWAP_ENDIAN, nullptr);
    EXPECT_EQ(png_get_bit_depth(png, info), 16);
    EXPECT_EQ(png_get_color_type(png, info), PNG_COLOR_TYPE_GRAY);
    png_textp text = nullptr;
    if (png_get_text(png, info, &text, nullptr) == 1) deep.description = text->text;
    for (png_uint_32 row = 0; row < png_get_image_height(png, info); ++row) {
      const uint16_t* pixels = reinterpret_cast<const uint16_t*>(png_get_rows(png, info)[row]);
      deep.pixels.insert(deep.pixels.end(), pixels, pixels + png_get_image_width(png, info));
    }
  }
  png_destroy_read_struct(&png, &info, nullptr);
  std::fclose(file);
  return deep;
}

SampleFile read_samples(const std::string& path) {
  const std::string bytes = read_text(path);
  const size_t end = bytes.find("\n\n");
  EXPECT_NE(end, std::string::npos) << path;
  const std::string header = bytes.substr(0, end + 1);
  EXPECT_NE(header.find("type: short\n"), std::string::npos) << header;
  SampleFile samples;
  samples.slope = std::stod(value_of(header, "slope"));
  samples.intercept = std::stod(value_of(header, "intercept"));
  const int nothing = std::stoi(value_of(header, "no sample"));
  for (size_t at = end + 2; at + 2 <= bytes.size(); at += 2) {
    int16_t sample;
    std::memcpy(&sample, bytes.data() + at, 2);
    samples.values.push_back(sample == nothing ? std::numeric_limits<double>::quiet_NaN()
                                               : sample * samples.slope + samples.intercept);
  }
  return samples;
}

std::string read_npy(const std::string& path, const std::string& type) {
  const std::string bytes = read_text(path);
  EXPECT_EQ(bytes.substr(0, 8), std::string("\x93NUMPY\x01\x00", 8)) << path;
  const size_t length = static_cast<unsigned char>(bytes[8]) + 256U * static_cast<unsigned char>(bytes[9]);
  EXPECT_EQ((10 + length) % 64, 0U);
  const std::string header = bytes.substr(10, length);
  EXPECT_NE(header.find("'descr': '" + type + "', 'fortran_order': False, 'shape': ("), std::string::npos)
      << header;
  EXPECT_EQ(header.back(), '\n');
  return bytes.substr(10 + length);
}

std::vector<float> read_floats(const std::string& path) {
  const std::string bytes = read_npy(path, "<f4");
  std::vector<float> numbers(bytes.size() / 4);
  std::memcpy(numbers.data(), bytes.data(), bytes.size());
  return numbers;
}

std::vector<Chunk> read_chunks(const std::string& path) {
  const std::string bytes = read_text(path);
  EXPECT_EQ(bytes.substr(0, 8), "\x89PNG\r\n\x1a\n") << path;
  std::vector<Chunk> chunks;
  for (size_t at = 8; at + 12 <= bytes.size();) {
    const uint32_t length = number_at(bytes, at);
    if (length > bytes.size() - at - 12) {
      ADD_FAILURE() << path << " ends within a chunk";
      break;
    }
    const std::string body = bytes.substr(at + 4, length + 4);
    EXPECT_EQ(number_at(bytes, at + 8 + length),
              crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size())));
    chunks.push_back({body.substr(0, 4), body.substr(4)});
    at += 12 + length;
  }
  return chunks;
}
