// Headers of "key: value" or "key = value" lines, and the voxel files that they name.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace zox::input {

struct HeaderLines {
  std::string path;
  std::map<std::string, std::string> fields;  // keys in small letters, without blanks around
  uint64_t bytes = 0;                         // of the header: what follows may be voxels
  std::string after;                          // what follows in the text that was read

  // Empty when there is no such field.
  std::string get(const std::string& key) const;
  [[noreturn]] void refuse_field(const std::string& key, const std::string& what) const;
};

// The longest header that is read.
inline constexpr size_t kMostHeader = 1 << 20;

// Reads numbers of a field: `count` of them, or as many as there are when it is 0. Refuses others.
std::vector<double> real_field(const HeaderLines& lines, const std::string& key, size_t count);
std::vector<int64_t> whole_field(const HeaderLines& lines, const std::string& key, size_t count);

// "name%03d.raw" with the numbers of first .. last; only %d with up to three digits is taken.
std::vector<std::string> numbered_files(const HeaderLines& lines, const std::string& pattern, int64_t first,
                                        int64_t last, int64_t step);

// A file as a header names it, from the header's folder.
std::string beside(const std::string& header, const std::string& name);

// A line of text from `at` on, without its end, which `at` is moved behind.
std::string_view next_line(std::string_view text, size_t& at);

}  // namespace zox::input
