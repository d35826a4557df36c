#include "pixels.h"

#include <gdcmImageReader.h>
#include <zox_render.h>

#include <cstring>
#include <stdexcept>

#include "no_abort.h"
#include "streams.h"

namespace zox::input::dicom {
namespace {

// Bits of a pixel that do not belong to its value (overlays lie there) are taken off.
template <class Stored>
int32_t value_of(const char* at, const PixelLayout& pixel) {
  Stored bits;
  std::memcpy(&bits, at, sizeof bits);
  const int below = pixel.high_bit + 1 - pixel.bits_stored;
  const uint32_t value = (uint32_t{bits} >> below) & ((1U << pixel.bits_stored) - 1);
  const uint32_t sign = 1U << (pixel.bits_stored - 1);
  if (!pixel.is_signed || !(value & sign)) return static_cast<int32_t>(value);
  return static_cast<int32_t>(value) - static_cast<int32_t>(sign << 1);
}

template <class Kept, class Stored>
void convert(const char* from, size_t count, const Frame& frame, std::byte* to) {
  for (size_t i = 0; i < count; ++i) {
    const int32_t stored = value_of<Stored>(from + i * sizeof(Stored), frame.pixel);
    Kept kept;
    if constexpr (std::is_same_v<Kept, float>)
      kept = static_cast<float>(stored * frame.slope + frame.intercept);
    else
      kept = static_cast<Kept>(stored);
    std::memcpy(to + i * sizeof kept, &kept, sizeof kept);
  }
}

template <class Stored>
void convert_to(int render_type, const char* from, size_t count, const Frame& frame, std::byte* to) {
  switch (render_type) {
    case ZOX_RENDER_UINT8:
      return convert<uint8_t, Stored>(from, count, frame, to);
    case ZOX_RENDER_INT8:
      return convert<int8_t, Stored>(from, count, frame, to);
    case ZOX_RENDER_INT16:
      return convert<int16_t, Stored>(from, count, frame, to);
    case ZOX_RENDER_UINT16:
      return convert<uint16_t, Stored>(from, count, frame, to);
    default:
      return convert<float, Stored>(from, count, frame, to);
  }
}

size_t frame_bytes(const Frame& frame) {
  return size_t(frame.columns) * size_t(frame.rows) * size_t(frame.pixel.bits_allocated / 8);
}

}  // namespace

VoxelType common_type(const std::vector<Frame>& frames) {
  const Frame& first = frames[0];
  for (const Frame& frame : frames)
    if (frame.slope != first.slope || frame.intercept != first.intercept)
      return {ZOX_RENDER_FLOAT32, 4, 1, 0};
  const PixelLayout& pixel = first.pixel;
  if (pixel.bits_stored <= 8)
    return {pixel.is_signed ? ZOX_RENDER_INT8 : ZOX_RENDER_UINT8, 1, first.slope, first.intercept};
  const bool fits_signed = pixel.is_signed || pixel.bits_stored < 16;
  return {fits_signed ? ZOX_RENDER_INT16 : ZOX_RENDER_UINT16, 2, first.slope, first.intercept};
}

PixelFile::PixelFile(const Frame& any_frame) {
  gdcm::ImageReader reader;
  reader.SetFileName(any_frame.path.c_str());
  bool is_read = false;
  if (!without_abort([&] { is_read = reader.Read(); }) || !is_read)
    throw std::runtime_error("has pixels that cannot be read");
  check_streams(reader.GetFile(), any_frame);
  const gdcm::Image& image = reader.GetImage();
  const gdcm::PixelFormat& format = image.GetPixelFormat();
  if (format.GetBitsAllocated() != any_frame.pixel.bits_allocated || format.GetSamplesPerPixel() != 1)
    throw std::runtime_error("has pixels of another kind than its header says");
  buffer_.resize(image.GetBufferLength());
  bool is_whole = false;
  if (buffer_.empty() || !without_abort([&] { is_whole = image.GetBuffer(buffer_.data()); }) || !is_whole)
    throw std::runtime_error("has pixels that are cut short or damaged");
}

void PixelFile::copy(const Frame& frame, const VoxelType& type, std::byte* voxels) const {
  const size_t bytes = frame_bytes(frame), begin = bytes * size_t(frame.index);
  if (begin + bytes > buffer_.size()) throw std::runtime_error("holds fewer pixels than its header says");
  const size_t count = size_t(frame.columns) * size_t(frame.rows);
  if (frame.pixel.bits_allocated == 8)
    convert_to<uint8_t>(type.render_type, buffer_.data() + begin, count, frame, voxels);
  else
    convert_to<uint16_t>(type.render_type, buffer_.data() + begin, count, frame, voxels);
}

}  // namespace zox::input::dicom
