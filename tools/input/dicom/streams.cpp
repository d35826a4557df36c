#include "streams.h"

#include <gdcmByteValue.h>
#include <gdcmSequenceOfFragments.h>
#include <gdcmTransferSyntax.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tags.h"

namespace zox::input::dicom {
namespace {

[[noreturn]] void cut_short() { throw std::runtime_error("has pixels that are cut short"); }

std::string_view bytes_of(const gdcm::ByteValue* value) {
  if (!value || !value->GetPointer()) return {};
  return {value->GetPointer(), value->GetLength()};
}

// Of a JPEG stream of any kind: it ends with its end mark, which one byte may pad to an even length, and
// in the coded pixels, where no byte pattern can look like it, that mark does not come before.
bool is_whole_jpeg(std::string_view stream) {
  const std::string_view end("\xFF\xD9", 2), scan("\xFF\xDA", 2), data("\xFF\x93", 2);
  while (!stream.empty() && stream.back() == '\0') stream.remove_suffix(1);
  if (!stream.ends_with(end)) return false;
  const size_t coded = std::min(stream.find(scan), stream.find(data));
  return coded != std::string_view::npos && stream.find(end, coded) == stream.size() - end.size();
}

bool begins_as_jpeg(std::string_view fragment) {
  return fragment.starts_with("\xFF\xD8\xFF") || fragment.starts_with("\xFF\x4F\xFF\x51");
}

uint32_t word(std::string_view bytes, size_t index) {
  uint32_t value = 0;
  std::memcpy(&value, bytes.data() + 4 * index, sizeof value);
  return value;
}

// How many bytes the runs of a segment unpack to; they end at the wanted number.
size_t unpacked(std::string_view runs, size_t wanted) {
  size_t count = 0;
  for (size_t at = 0; at < runs.size() && count < wanted;) {
    const int head = static_cast<signed char>(runs[at++]);
    if (head == -128) continue;
    const size_t read = head < 0 ? 1 : size_t(head) + 1;
    if (at + read > runs.size()) return count;
    at += read;
    count += head < 0 ? size_t(1 - head) : read;
  }
  return count;
}

// A frame in runs: 16 words (the number of segments, one for each byte of a pixel, and where each
// begins), then the segments.
bool is_whole_rle(std::string_view stream, const Frame& frame) {
  constexpr size_t kHead = 64;
  if (stream.size() < kHead) return false;
  const size_t segments = word(stream, 0), pixels = size_t(frame.columns) * size_t(frame.rows);
  if (segments != size_t(frame.pixel.bits_allocated / 8)) return false;
  for (size_t s = 1; s <= segments; ++s) {
    const size_t begin = word(stream, s), end = s == segments ? stream.size() : word(stream, s + 1);
    if (begin < kHead || begin > end || end > stream.size()) return false;
    if (unpacked(stream.substr(begin, end - begin), pixels) < pixels) return false;
  }
  return true;
}

// A frame is one fragment or several; its stream begins with the first.
void check_jpegs(const gdcm::SequenceOfFragments& fragments) {
  std::string stream;
  for (size_t i = 0; i < fragments.GetNumberOfFragments(); ++i) {
    const std::string_view fragment = bytes_of(fragments.GetFragment(i).GetByteValue());
    if (begins_as_jpeg(fragment) && !stream.empty()) {
      if (!is_whole_jpeg(stream)) cut_short();
      stream.clear();
    }
    stream += fragment;
  }
  if (!is_whole_jpeg(stream)) cut_short();
}

void check_fragments(const gdcm::SequenceOfFragments& fragments, bool rle, const Frame& frame) {
  const size_t count = fragments.GetNumberOfFragments();
  if (count == 0) cut_short();
  if (!rle) return check_jpegs(fragments);
  // A frame in runs is one fragment.
  for (size_t i = 0; i < count; ++i)
    if (!is_whole_rle(bytes_of(fragments.GetFragment(i).GetByteValue()), frame)) cut_short();
}

}  // namespace

void check_streams(const gdcm::File& file, const Frame& frame) {
  const gdcm::DataSet& data = file.GetDataSet();
  if (!data.FindDataElement(tags::kPixelData)) throw std::runtime_error("holds no pixels");
  const gdcm::DataElement& pixels = data.GetDataElement(tags::kPixelData);
  const gdcm::TransferSyntax& syntax = file.GetHeader().GetDataSetTransferSyntax();
  if (const gdcm::SequenceOfFragments* fragments = pixels.GetSequenceOfFragments())
    return check_fragments(*fragments, syntax == gdcm::TransferSyntax::RLELossless, frame);
  const size_t least = size_t(frame.columns) * size_t(frame.rows) * size_t(frame.pixel.bits_allocated / 8);
  if (bytes_of(pixels.GetByteValue()).size() < least) cut_short();
}

}  // namespace zox::input::dicom
