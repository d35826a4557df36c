#include "encode.h"

#include <turbojpeg.h>

#include <memory>
#include <new>

#include "../output/picture_file.h"

namespace zox::view {
namespace {

struct End {
  void operator()(void* compressor) const { tjDestroy(compressor); }
  void operator()(unsigned char* bytes) const { tjFree(bytes); }
};

}  // namespace

std::string encode_png(int width, int height, const std::vector<uint8_t>& grey) {
  output::Image image;
  image.width = width;
  image.height = height;
  image.grey = grey.data();
  return output::encode_png(image, output::kDefaultLevel);
}

std::string encode_jpeg(int width, int height, const std::vector<uint8_t>& grey, int quality) {
  const std::unique_ptr<void, End> compressor(tjInitCompress());
  unsigned char* bytes = nullptr;
  unsigned long count = 0;
  const int status = compressor ? tjCompress2(compressor.get(), grey.data(), width, 0, height, TJPF_GRAY,
                                              &bytes, &count, TJSAMP_GRAY, quality, TJFLAG_FASTDCT)
                                : -1;
  const std::unique_ptr<unsigned char, End> owner(bytes);
  if (status != 0) throw std::bad_alloc();
  return {reinterpret_cast<const char*>(bytes), count};
}

}  // namespace zox::view
