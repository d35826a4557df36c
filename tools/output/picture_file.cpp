#include "picture_file.h"

#include <libdeflate.h>

#include <cstring>
#include <memory>
#include <new>
#include <string_view>

namespace zox::output {
namespace {

void put_32(std::string& bytes, uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift);
}

void put_16(std::string& bytes, uint32_t value) {
  bytes += static_cast<char>(value >> 8);
  bytes += static_cast<char>(value);
}

void put_chunk(std::string& bytes, const char* type, std::string_view content) {
  put_32(bytes, static_cast<uint32_t>(content.size()));
  const size_t begin = bytes.size();
  bytes += type;
  bytes += content;
  put_32(bytes, libdeflate_crc32(0, bytes.data() + begin, bytes.size() - begin));
}

// Every row begins with the number of its filter. Differences to the row above pack well and are quick;
// the numbers of colours do not differ smoothly.
constexpr uint8_t kFilterNone = 0;
constexpr uint8_t kFilterUp = 2;

std::string filtered(const Image& image) {
  const size_t voxels = static_cast<size_t>(image.width);
  const size_t row_bytes = voxels * (image.deep ? 2 : 1);
  std::string result((row_bytes + 1) * static_cast<size_t>(image.height), '\0');
  std::vector<uint8_t> row(row_bytes);
  std::vector<uint8_t> above(row_bytes);
  uint8_t* out = reinterpret_cast<uint8_t*>(result.data());
  for (size_t y = 0; y < static_cast<size_t>(image.height); ++y) {
    if (image.deep) {
      for (size_t x = 0; x < voxels; ++x) {
        row[2 * x] = static_cast<uint8_t>(image.deep[y * voxels + x] >> 8);
        row[2 * x + 1] = static_cast<uint8_t>(image.deep[y * voxels + x]);
      }
    } else {
      std::memcpy(row.data(), image.grey + y * voxels, row_bytes);
    }
    *out++ = image.palette ? kFilterNone : kFilterUp;
    if (image.palette)
      std::memcpy(out, row.data(), row_bytes);
    else
      for (size_t i = 0; i < row_bytes; ++i) out[i] = static_cast<uint8_t>(row[i] - above[i]);
    out += row_bytes;
    row.swap(above);
  }
  return result;
}

std::string packed(const Image& image, int level) {
  const std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)> packer(
      libdeflate_alloc_compressor(level), &libdeflate_free_compressor);
  if (!packer) throw std::bad_alloc();
  const std::string raw = filtered(image);
  std::string result(libdeflate_zlib_compress_bound(packer.get(), raw.size()), '\0');
  result.resize(libdeflate_zlib_compress(packer.get(), raw.data(), raw.size(), result.data(), result.size()));
  return result;
}

void put_head(std::string& bytes, const Image& image) {
  bytes += "\x89PNG\r\n\x1a\n";
  std::string header;
  put_32(header, static_cast<uint32_t>(image.width));
  put_32(header, static_cast<uint32_t>(image.height));
  header += static_cast<char>(image.deep ? 16 : 8);
  header += static_cast<char>(image.palette ? 3 : 0);
  header += std::string(3, '\0');  // packing, filters and order of rows: the usual ones
  put_chunk(bytes, "IHDR", header);
}

void put_colours(std::string& bytes, const Image& image) {
  if (image.palette)
    put_chunk(bytes, "PLTE", {reinterpret_cast<const char*>(image.palette->data()), sizeof *image.palette});
  for (const auto& [keyword, text] : image.texts) put_chunk(bytes, "tEXt", keyword + '\0' + text);
}

}  // namespace

std::string encode_png(const Image& image, int level) {
  std::string bytes;
  put_head(bytes, image);
  put_colours(bytes, image);
  put_chunk(bytes, "IDAT", packed(image, level));
  put_chunk(bytes, "IEND", "");
  return bytes;
}

Animation::Animation(int frames, int milliseconds, int level)
    : frames_(frames), milliseconds_(milliseconds), level_(level) {}

void Animation::add(const Image& frame) {
  const bool first = bytes_.empty();
  if (first) {
    put_head(bytes_, frame);
    std::string control;
    put_32(control, static_cast<uint32_t>(frames_));
    put_32(control, 0);  // plays for ever
    put_chunk(bytes_, "acTL", control);
    put_colours(bytes_, frame);
  }
  std::string control;
  put_32(control, sequence_++);
  put_32(control, static_cast<uint32_t>(frame.width));
  put_32(control, static_cast<uint32_t>(frame.height));
  put_32(control, 0);
  put_32(control, 0);
  put_16(control, static_cast<uint32_t>(milliseconds_));
  put_16(control, 1000);
  control += std::string(2, '\0');  // replaces the frame before, wholly
  put_chunk(bytes_, "fcTL", control);
  if (first) return put_chunk(bytes_, "IDAT", packed(frame, level_));
  std::string content;
  put_32(content, sequence_++);
  put_chunk(bytes_, "fdAT", content + packed(frame, level_));
}

std::string Animation::finish() {
  put_chunk(bytes_, "IEND", "");
  return std::move(bytes_);
}

}  // namespace zox::output
