// Words and numbers of headers, taken only when every character of them is understood.
#pragma once

#include <charconv>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace zox::input {

// Headers and names of files hold any byte: shown, none may end a sentence, break its line or move a cursor.
inline std::string printable(std::string text) {
  for (char& letter : text)
    if (static_cast<unsigned char>(letter) < ' ' || letter == 127) letter = '?';
  return text;
}

inline std::string quoted(const std::string& path) { return "'" + printable(path) + "'"; }

// A finite number, and nothing before or behind it but a plus sign.
template <class Number>
std::optional<Number> parse_number(std::string_view text) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if constexpr (std::is_floating_point_v<Number>)
    if (!std::isfinite(number)) return std::nullopt;
  return number;
}

// `count` numbers with blanks between them and no more.
template <class Number>
std::optional<std::vector<Number>> parse_numbers(std::string_view text, size_t count);

std::string trimmed(std::string_view text);
std::string lower(std::string_view text);
std::vector<std::string> words_of(std::string_view text);

template <class Number>
std::optional<std::vector<Number>> parse_numbers(std::string_view text, size_t count) {
  std::vector<Number> numbers;
  for (const std::string& word : words_of(text)) {
    const auto number = parse_number<Number>(word);
    if (!number) return std::nullopt;
    numbers.push_back(*number);
  }
  if (numbers.size() != count) return std::nullopt;
  return numbers;
}

}  // namespace zox::input
