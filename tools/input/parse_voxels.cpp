#include "parse_voxels.h"

#include <cmath>
#include <cstring>
#include <string_view>

#include "text.h"

namespace zox::input {
namespace {

bool is_blank(char letter) { return letter == ' ' || (letter >= '\t' && letter <= '\r'); }

// The next word, which is taken off the text; empty at its end.
std::string_view next_word(std::string_view& text) {
  while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
  size_t length = 0;
  while (length < text.size() && !is_blank(text[length])) ++length;
  const std::string_view word = text.substr(0, length);
  text.remove_prefix(length);
  return word;
}

template <class Number>
bool parse_word(std::string_view word, Number& number) {
  if (word.size() > 1 && word[0] == '+') word.remove_prefix(1);
  // Not finite ones too: such voxels have a meaning.
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  return !word.empty() && error == std::errc() && end == word.data() + word.size();
}

template <class Number>
bool parse_all(const VoxelSource& source, std::string_view text, std::byte* out) {
  for (uint64_t i = 0; i < source.total; ++i) {
    Number number;
    if (!parse_word(next_word(text), number)) return false;
    if (i < source.first || i >= source.first + source.count) continue;
    std::memcpy(out, &number, sizeof number);
    out += sizeof number;
  }
  return true;
}

int digit_of(char letter) {
  if (letter >= '0' && letter <= '9') return letter - '0';
  if (letter >= 'a' && letter <= 'f') return letter - 'a' + 10;
  return letter >= 'A' && letter <= 'F' ? letter - 'A' + 10 : -1;
}

bool parse_hex(const VoxelSource& source, std::string_view text, std::byte* out) {
  const size_t size = stored_bytes(source.type);
  const uint64_t begin = 2 * source.first * size;
  const uint64_t end = begin + 2 * source.count * size;
  uint64_t at = 0;
  for (const char letter : text) {
    if (is_blank(letter)) continue;
    const int digit = digit_of(letter);
    if (digit < 0) return false;
    if (at >= begin && at < end) {
      std::byte& byte = out[(at - begin) / 2];
      byte = at % 2 == 0 ? static_cast<std::byte>(digit << 4) : byte | static_cast<std::byte>(digit);
    }
    ++at;
  }
  return at >= 2 * source.total * size;
}

}  // namespace

bool parse_voxels(const VoxelSource& source, Bytes bytes, std::byte* out) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  if (source.packing == Packing::kHex) return parse_hex(source, text, out);
  switch (source.type) {
    case Stored::kU8:
      return parse_all<uint8_t>(source, text, out);
    case Stored::kS8:
      return parse_all<int8_t>(source, text, out);
    case Stored::kU16:
      return parse_all<uint16_t>(source, text, out);
    case Stored::kS16:
      return parse_all<int16_t>(source, text, out);
    case Stored::kU32:
      return parse_all<uint32_t>(source, text, out);
    case Stored::kS32:
      return parse_all<int32_t>(source, text, out);
    case Stored::kU64:
      return parse_all<uint64_t>(source, text, out);
    case Stored::kS64:
      return parse_all<int64_t>(source, text, out);
    case Stored::kF32:
      return parse_all<float>(source, text, out);
    default:
      return parse_all<double>(source, text, out);
  }
}

}  // namespace zox::input
