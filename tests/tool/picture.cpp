#include "picture.h"

#include <gtest/gtest.h>
#include <png.h>

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
