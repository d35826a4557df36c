#include "text.h"

#include <algorithm>

namespace zox::input {

namespace {
constexpr char kBlanks[] = " \t\r\n\v\f";
}

std::string trimmed(std::string_view text) {
  const size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return "";
  return std::string(text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1));
}

std::string lower(std::string_view text) {
  std::string result(text);
  for (char& letter : result)
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  return result;
}

std::vector<std::string> words_of(std::string_view text) {
  std::vector<std::string> words;
  for (size_t begin = text.find_first_not_of(kBlanks); begin != std::string_view::npos;) {
    const size_t end = std::min(text.find_first_of(kBlanks, begin), text.size());
    words.emplace_back(text.substr(begin, end - begin));
    begin = text.find_first_not_of(kBlanks, end);
  }
  return words;
}

}  // namespace zox::input
