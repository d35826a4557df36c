#include "extent.h"

#include <cstdint>
#include <fstream>
#include <string_view>

namespace zox::input::dicom {
namespace {

constexpr uint32_t kUndefined = 0xFFFFFFFF;
constexpr uint32_t kPixelData = 0x7FE00010;
constexpr uint32_t kItem = 0xFFFEE000, kItemEnd = 0xFFFEE00D, kSequenceEnd = 0xFFFEE0DD;
constexpr int kDeepest = 64;

// Steps over elements without their contents. Every step is false once the file has ended.
class Walker {
 public:
  explicit Walker(const std::string& path) : file_(path, std::ios::binary) {
    file_.seekg(0, std::ios::end);
    size_ = static_cast<uint64_t>(file_.tellg());
    seek(0);
  }

  bool reaches_end_of_pixels(Encoding encoding) {
    to_data_set();
    encoding_ = encoding;
    while (read_head()) {
      if (tag_ == kPixelData) return length_ == kUndefined ? skip_items(0) : skip(length_);
      if (!skip_value(0)) return false;
    }
    return false;
  }

 private:
  void seek(uint64_t at) {
    at_ = at;
    file_.clear();
    file_.seekg(static_cast<std::streamoff>(at));
  }

  bool skip(uint64_t bytes) {
    if (bytes > size_ - at_) return false;
    seek(at_ + bytes);
    return true;
  }

  // Behind the preamble and the group of the file itself, which is written one way always.
  void to_data_set() {
    char mark[4] = {};
    seek(128);
    file_.read(mark, 4);
    seek(std::string_view(mark, 4) == "DICM" ? 132 : 0);
    encoding_ = {};
    for (uint64_t begin = at_;; begin = at_)
      if (!read_head() || tag_ >> 16 != 2 || !skip(length_)) return seek(begin);
  }

  uint32_t number(int bytes) {
    unsigned char raw[4] = {};
    file_.read(reinterpret_cast<char*>(raw), bytes);
    uint32_t value = 0;
    for (int i = 0; i < bytes; ++i)
      value |= uint32_t{raw[i]} << 8 * (encoding_.big_endian ? bytes - 1 - i : i);
    at_ += static_cast<uint64_t>(bytes);
    return value;
  }

  // Tag and length of an element or an item.
  bool read_head() {
    if (size_ - at_ < 8) return false;
    tag_ = number(2) << 16;
    tag_ |= number(2);
    if (!encoding_.explicit_types || tag_ >> 16 == 0xFFFE) {
      length_ = number(4);
      return true;
    }
    char type[2] = {};
    file_.read(type, 2);
    at_ += 2;
    length_ = number(2);
    for (const std::string_view longer :
         {"OB", "OD", "OF", "OL", "OV", "OW", "SQ", "SV", "UC", "UN", "UR", "UT", "UV"})
      if (longer == std::string_view(type, 2)) {
        if (size_ - at_ < 4) return false;
        length_ = number(4);
      }
    return true;
  }

  bool skip_value(int depth) { return length_ == kUndefined ? skip_items(depth) : skip(length_); }

  // Items, or fragments, up to the end of their sequence.
  bool skip_items(int depth) {
    if (depth > kDeepest) return false;
    while (read_head()) {
      if (tag_ == kSequenceEnd) return true;
      if (tag_ != kItem) return false;
      if (length_ == kUndefined ? !skip_elements(depth + 1) : !skip(length_)) return false;
    }
    return false;
  }

  bool skip_elements(int depth) {
    while (read_head()) {
      if (tag_ == kItemEnd) return true;
      if (!skip_value(depth)) return false;
    }
    return false;
  }

  std::ifstream file_;
  uint64_t size_ = 0, at_ = 0;
  Encoding encoding_;
  uint32_t tag_ = 0, length_ = 0;
};

}  // namespace

bool holds_all_pixels(const std::string& path, Encoding encoding) {
  return Walker(path).reaches_end_of_pixels(encoding);
}

}  // namespace zox::input::dicom
