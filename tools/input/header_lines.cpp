#include "header_lines.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "format.h"
#include "text.h"

namespace zox::input {
namespace {

template <class Number>
std::vector<Number> number_field(const HeaderLines& lines, const std::string& key, size_t count) {
  const std::string text = lines.get(key);
  const auto numbers = parse_numbers<Number>(text, count ? count : words_of(text).size());
  if (!numbers || numbers->empty())
    lines.refuse_field(key, count ? "must be " + std::to_string(count) + " numbers" : "must be numbers");
  return *numbers;
}

}  // namespace

std::string HeaderLines::get(const std::string& key) const {
  const auto found = fields.find(lower(key));
  return found == fields.end() ? "" : found->second;
}

void HeaderLines::refuse_field(const std::string& key, const std::string& what) const {
  constexpr size_t kMostShown = 60;
  refuse(quoted(path) + " cannot be read: its '" + key + "' " + what + ", not " +
         quoted(get(key).substr(0, kMostShown)) + ".");
}

std::vector<double> real_field(const HeaderLines& lines, const std::string& key, size_t count) {
  return number_field<double>(lines, key, count);
}

std::vector<int64_t> whole_field(const HeaderLines& lines, const std::string& key, size_t count) {
  return number_field<int64_t>(lines, key, count);
}

std::string beside(const std::string& header, const std::string& name) {
  return (std::filesystem::path(header).parent_path() / name).string();
}

std::vector<std::string> numbered_files(const HeaderLines& lines, const std::string& pattern, int64_t first,
                                        int64_t last, int64_t step) {
  constexpr int64_t kMostFiles = 1 << 16;
  const size_t percent = pattern.find('%');
  const size_t end = pattern.find_first_not_of("0123456789", percent + 1);
  if (end == std::string::npos || end - percent > 4 || pattern[end] != 'd' ||
      pattern.find('%', end) != std::string::npos || step < 1 || last < first ||
      last - first >= kMostFiles * step)
    refuse(quoted(lines.path) + " is damaged: its header does not say where the voxels are.");
  const std::string digits = pattern.substr(percent + 1, end - percent - 1);
  const size_t width = digits.empty() ? 0 : static_cast<size_t>(std::stoi(digits));
  std::vector<std::string> files;
  for (int64_t number = first; number <= last; number += step) {
    std::string text = std::to_string(number);
    if (text.size() < width) text.insert(0, width - text.size(), digits[0] == '0' ? '0' : ' ');
    files.push_back(beside(lines.path, pattern.substr(0, percent) + text + pattern.substr(end + 1)));
  }
  return files;
}

std::string_view next_line(std::string_view text, size_t& at) {
  const size_t end = std::min(text.find('\n', at), text.size());
  std::string_view line = text.substr(at, end - at);
  at = std::min(end + 1, text.size());
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}

}  // namespace zox::input
