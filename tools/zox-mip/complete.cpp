#include "complete.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zox_mip {
namespace {

namespace fs = std::filesystem;

constexpr size_t kHeaderBytes = 348;

using GzFile = std::unique_ptr<gzFile_s, decltype(&gzclose)>;

// gzopen reads plain files as they are.
GzFile open_gz(const std::string& path) { return {gzopen(path.c_str(), "rb"), &gzclose}; }

// The header of NIfTI-1 and Analyze, of which only lengths and coordinates matter here.
class Header {
 public:
  static std::optional<Header> read(const std::string& path) {
    Header header;
    const GzFile file = open_gz(path);
    if (!file || gzread(file.get(), header.bytes_.data(), kHeaderBytes) != int{kHeaderBytes}) return {};
    // The number of dimensions tells the byte order, 1 to 7; where there is none, the header's length.
    const int dimensions = header.number<int16_t>(40);
    header.swapped_ = dimensions == 0 ? header.number<int32_t>(0) != int32_t{kHeaderBytes}
                                      : dimensions < 1 || dimensions > 7;
    return header;
  }

  // Readers take any version from 1 to 9 for NIfTI, and what has none for Analyze.
  bool is_nifti() const {
    const char* magic = bytes_.data() + 344;
    return magic[0] == 'n' && (magic[1] == '+' || magic[1] == 'i') && magic[2] >= '1' && magic[2] <= '9' &&
           magic[3] == '\0';
  }

  uint64_t voxel_bytes() const {
    uint64_t bytes = static_cast<uint64_t>(std::max<int>(number<int16_t>(72), 0)) / 8;  // bitpix
    const int dimensions = std::clamp<int>(number<int16_t>(40), 0, 7);
    for (int axis = 1; axis <= dimensions; ++axis)
      bytes *= static_cast<uint64_t>(std::max<int>(number<int16_t>(40 + 2 * static_cast<size_t>(axis)), 1));
    return bytes;
  }

  // Where scanner coordinates stand, three rows of four.
  bool coordinates_are_sound() const {
    constexpr float kMost = 1e9F;
    if (!is_nifti() || number<int16_t>(254) <= 0) return true;  // sform_code
    for (size_t i = 0; i < 12; ++i) {
      const float coordinate = std::bit_cast<float>(number<uint32_t>(280 + 4 * i));
      if (!(std::abs(coordinate) <= kMost)) return false;
    }
    return true;
  }

  uint64_t voxel_offset() const {
    const float offset = std::bit_cast<float>(number<uint32_t>(108));
    return offset >= 0 && offset < 1e9F ? static_cast<uint64_t>(offset) : 0;
  }

 private:
  template <class Number>
  Number number(size_t offset) const {
    std::array<char, sizeof(Number)> raw;
    std::memcpy(raw.data(), bytes_.data() + offset, sizeof(Number));
    if (swapped_) std::reverse(raw.begin(), raw.end());
    return std::bit_cast<Number>(raw);
  }

  std::array<char, kHeaderBytes> bytes_{};
  bool swapped_ = false;
};

// Reads on to the end, where gzip's own checksum stands.
bool holds_at_least(const std::string& path, uint64_t wanted) {
  const GzFile file = open_gz(path);
  if (!file) return false;
  std::vector<char> chunk(1 << 20);
  uint64_t total = 0;
  int got = 0;
  while ((got = gzread(file.get(), chunk.data(), static_cast<unsigned>(chunk.size()))) > 0)
    total += static_cast<uint64_t>(got);
  int error = Z_OK;
  gzerror(file.get(), &error);
  return got == 0 && error == Z_OK && total >= wanted;
}

bool is_pair(const std::string& path) {
  const std::string name = fs::path(path).filename().string();
  return name.find(".hdr") != std::string::npos || name.find(".img") != std::string::npos;
}

// The other file of a pair x.hdr and x.img, either of which may end in .gz too.
std::optional<std::string> partner(const fs::path& file, const char* extension) {
  const fs::path plain = file.extension() == ".gz" ? fs::path(file).replace_extension() : file;
  for (const char* suffix : {"", ".gz"}) {
    const std::string candidate = fs::path(plain).replace_extension(extension).string() + suffix;
    if (fs::exists(candidate)) return candidate;
  }
  return std::nullopt;
}

// Of the conversions of printf only %d, with up to three digits, and that once.
bool is_safe_pattern(const std::string& pattern) {
  const size_t percent = pattern.find('%');
  if (percent == std::string::npos) return true;
  const size_t end = pattern.find_first_not_of("0123456789", percent + 1);
  return end != std::string::npos && end - percent <= 4 && pattern[end] == 'd' &&
         pattern.find('%', end) == std::string::npos;
}

}  // namespace

bool can_hold(const std::string& path, uint64_t voxel_bytes) {
  // Deflate packs at most 1032 to 1.
  constexpr uint64_t kMostPacked = 1032;
  const std::string extension = fs::path(path).extension().string();
  const bool is_one_file =
      extension == ".nrrd" || extension == ".mha" || extension == ".nii" || extension == ".gz";
  return !is_one_file || voxel_bytes / kMostPacked <= fs::file_size(path);
}

bool is_nifti_sound(const std::string& path) {
  const std::optional<std::string> header_file = is_pair(path) ? partner(path, ".hdr") : path;
  const std::optional<Header> header = header_file ? Header::read(*header_file) : std::nullopt;
  return !header || header->coordinates_are_sound();
}

bool is_meta_image_sound(const std::string& path) {
  constexpr size_t kMostHeader = 1 << 20;
  const std::string key = "ElementDataFile";
  std::string header(kMostHeader, '\0');
  std::ifstream file(path, std::ios::binary);
  file.read(header.data(), static_cast<std::streamsize>(header.size()));
  header.resize(static_cast<size_t>(file.gcount()));
  // Which line counts is the reader's to say: every one that could.
  bool found = false;
  for (size_t at = header.find(key); at != std::string::npos; at = header.find(key, at + 1)) {
    found = true;
    if (!is_safe_pattern(header.substr(at, header.find('\n', at) - at))) return false;
  }
  return found;
}

bool is_nifti_complete(const std::string& path) {
  const std::optional<std::string> header_file = is_pair(path) ? partner(path, ".hdr") : path;
  const std::optional<std::string> voxel_file = is_pair(path) ? partner(path, ".img") : path;
  if (!header_file || !voxel_file) return false;
  const std::optional<Header> header = Header::read(*header_file);
  return header && holds_at_least(*voxel_file, header->voxel_offset() + header->voxel_bytes());
}

bool reads_to_the_end(const std::function<void()>& read, std::byte* buffer, size_t bytes,
                      size_t voxel_bytes) {
  // A byte of the last voxel that twice comes out as it was put in was not read. All its bytes count,
  // for a reader may have swapped them.
  std::byte* const last = buffer + bytes - voxel_bytes;
  std::vector<bool> unread(voxel_bytes, true);
  for (const std::byte fill : {std::byte{0x5A}, std::byte{0xA5}}) {
    std::fill(last, last + voxel_bytes, fill);
    read();
    for (size_t i = 0; i < voxel_bytes; ++i) unread[i] = unread[i] && last[i] == fill;
    if (std::find(unread.begin(), unread.end(), true) == unread.end()) return true;
  }
  return false;
}

}  // namespace zox_mip
