#include "png_file.h"

#include <png.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>

#include "failure.h"

namespace zox_mip {
namespace {

[[noreturn]] void fail_to_write(const std::string& path, const std::string& reason) {
  fail("'" + path + "' cannot be written: " + reason + ".");
}

// A file of its own name in the same directory; gone again unless it is moved to its place.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& path) : path_(path), name_(path + ".XXXXXX") {
    const int descriptor = mkstemp(name_.data());
    if (descriptor < 0) fail_to_write(path_, std::strerror(errno));
    // mkstemp lets nobody else read the file; give it what other files get.
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(descriptor, 0666 & ~mask);
    stream_ = fdopen(descriptor, "wb");
  }
  ~TemporaryFile() {
    if (stream_) std::fclose(stream_);
    if (!placed_) unlink(name_.c_str());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  FILE* stream() { return stream_; }

  void move_to_place() {
    const bool written = std::fflush(stream_) == 0 && std::fclose(std::exchange(stream_, nullptr)) == 0;
    if (!written || std::rename(name_.c_str(), path_.c_str()) != 0)
      fail_to_write(path_, std::strerror(errno));
    placed_ = true;
  }

 private:
  std::string path_;
  std::string name_;
  FILE* stream_ = nullptr;
  bool placed_ = false;
};

// Renaming onto a device, say, would put a file in its place.
void check_is_replaceable(const std::string& path) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
    fail_to_write(path, "there is something else than a file of that name");
}

}  // namespace

void write_png(const std::string& path, int width, int height, const std::vector<uint8_t>& grey) {
  check_is_replaceable(path);
  TemporaryFile file(path);
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(width);
  image.height = static_cast<png_uint_32>(height);
  image.format = PNG_FORMAT_GRAY;
  if (!file.stream() || !png_image_write_to_stdio(&image, file.stream(), 0, grey.data(), 0, nullptr))
    fail_to_write(path, file.stream() ? image.message : std::strerror(errno));
  file.move_to_place();
}

}  // namespace zox_mip
