#include "json.h"

#include <charconv>
#include <cmath>
#include <cstdint>

namespace zox::view {
namespace {

// The bytes of the UTF-8 character at the head of `text`; 0 where there is none.
size_t character_bytes(std::string_view text) {
  const auto byte = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
  const uint8_t head = byte(0);
  const size_t bytes = head < 0x80   ? 1
                       : head < 0xc2 ? 0
                       : head < 0xe0 ? 2
                       : head < 0xf0 ? 3
                       : head < 0xf5 ? 4
                                     : 0;
  if (bytes > text.size()) return 0;
  for (size_t i = 1; i < bytes; ++i)
    if ((byte(i) & 0xc0) != 0x80) return 0;
  // Overlong forms, surrogates and what lies beyond U+10FFFF.
  if ((head == 0xe0 && byte(1) < 0xa0) || (head == 0xed && byte(1) > 0x9f)) return 0;
  if ((head == 0xf0 && byte(1) < 0x90) || (head == 0xf4 && byte(1) > 0x8f)) return 0;
  return bytes;
}

std::string escaped(char character) {
  if (character == '"' || character == '\\') return {'\\', character};
  if (static_cast<uint8_t>(character) >= 0x20) return {character};
  constexpr char kDigits[] = "0123456789abcdef";
  return std::string("\\u00") + (character & 0x10 ? '1' : '0') + kDigits[character & 15];
}

}  // namespace

std::string json_string(std::string_view text) {
  std::string json = "\"";
  while (!text.empty()) {
    const size_t bytes = character_bytes(text);
    if (bytes == 0)
      json += "\xef\xbf\xbd";
    else if (bytes == 1)
      json += escaped(text[0]);
    else
      json += text.substr(0, bytes);
    text.remove_prefix(bytes == 0 ? 1 : bytes);
  }
  return json + '"';
}

std::string json_number(double number) {
  if (!std::isfinite(number)) return "null";
  char text[32];
  const auto [end, error] = std::to_chars(text, text + sizeof text, number);
  return error == std::errc() ? std::string(text, end) : "null";
}

JsonObject& JsonObject::raw(std::string_view name, std::string_view value) {
  if (!fields_.empty()) fields_ += ',';
  fields_ += json_string(name) + ':';
  fields_ += value;
  return *this;
}

}  // namespace zox::view
