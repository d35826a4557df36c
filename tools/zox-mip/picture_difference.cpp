// Prints how far two grey pictures of one size differ: the mean and the largest absolute difference of
// their pixels, in grey levels.
#include <png.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

struct Grey {
  png_uint_32 width = 0;
  png_uint_32 height = 0;
  std::vector<uint8_t> pixels;
};

bool read(const char* path, Grey& grey) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_file(&image, path)) return false;
  image.format = PNG_FORMAT_GRAY;
  grey = {image.width, image.height, std::vector<uint8_t>(PNG_IMAGE_SIZE(image))};
  return png_image_finish_read(&image, nullptr, grey.pixels.data(), 0, nullptr) != 0;
}

}  // namespace

int main(int argc, char** argv) {
  Grey a;
  Grey b;
  if (argc != 3 || !read(argv[1], a) || !read(argv[2], b) || a.width != b.width || a.height != b.height) {
    std::fprintf(stderr, "picture-difference: needs two PNG files of one size.\n");
    return 1;
  }
  long sum = 0;
  int largest = 0;
  for (size_t i = 0; i < a.pixels.size(); ++i) {
    const int difference = std::abs(a.pixels[i] - b.pixels[i]);
    sum += difference;
    largest = std::max(largest, difference);
  }
  std::printf("%s and %s differ by %.4f grey levels in the mean and by %d at most.\n", argv[1], argv[2],
              static_cast<double>(sum) / static_cast<double>(a.pixels.size()), largest);
  return 0;
}
