#include "nrrd_axes.h"

#include <algorithm>
#include <utility>

#include "format.h"
#include "text.h"

namespace zox::input {
namespace {

// "(1,0,0)"; none: an axis that is no direction in space. Of a picture in a plane "(1,0)" will do.
std::array<double, 3> parse_vector(const HeaderLines& lines, const std::string& key, std::string word) {
  const bool in_plane = lines.get("space dimension") == "2";
  if (word.size() < 2 || word.front() != '(' || word.back() != ')')
    lines.refuse_field(key, "must be vectors");
  word = word.substr(1, word.size() - 2) + (in_plane ? ",0" : "");
  std::array<double, 3> vector{};
  size_t at = 0;
  for (double& part : vector) {
    const size_t comma = std::min(word.find(',', at), word.size());
    const auto number = parse_number<double>(trimmed(std::string_view(word).substr(at, comma - at)));
    if (!number) lines.refuse_field(key, "must be vectors of three numbers");
    part = *number;
    at = std::min(comma + 1, word.size());
  }
  if (at < word.size()) lines.refuse_field(key, "must be vectors of three numbers");
  return vector;
}

// The words of a field of vectors, in which blanks may follow commas.
std::vector<std::string> vector_words(const std::string& text) {
  std::vector<std::string> words;
  std::string word;
  int depth = 0;
  for (const char letter : text + " ") {
    depth += letter == '(' ? 1 : letter == ')' ? -1 : 0;
    const bool blank = letter == ' ' || letter == '\t';
    if (!blank) word += letter;
    if (depth <= 0 && (blank || letter == ')') && !word.empty()) words.push_back(std::exchange(word, ""));
  }
  return words;
}

void take_kinds(const HeaderLines& lines, std::vector<NrrdAxis>& axes) {
  const std::vector<std::string> kinds = words_of(lines.get("kinds"));
  if (kinds.empty()) return;
  if (kinds.size() != axes.size()) lines.refuse_field("kinds", "must be one for each axis");
  for (size_t i = 0; i < axes.size(); ++i) {
    const std::string kind = lower(kinds[i]);
    if (kind == "domain" || kind == "space" || kind == "???" || kind == "none") continue;
    axes[i].spatial = false;
    if (kind == "list" || kind == "time" || axes[i].size == 1 || kind == "stub" || kind == "scalar") continue;
    refuse(quoted(lines.path) + " holds " + (kind.find("color") == std::string::npos ? "vector" : "rgb") +
           " voxels; only plain numbers can be shown.");
  }
}

void take_directions(const HeaderLines& lines, std::vector<NrrdAxis>& axes) {
  const std::vector<std::string> words = vector_words(lines.get("space directions"));
  if (words.empty()) {
    std::vector<double> spacings(axes.size(), 1);
    const std::vector<std::string> given = words_of(lines.get("spacings"));
    if (!given.empty() && given.size() != axes.size())
      lines.refuse_field("spacings", "must be one for each axis");
    size_t space = 0;
    for (size_t i = 0; i < axes.size(); ++i) {
      const bool unknown = given.empty() || lower(given[i]) == "nan";
      const auto spacing = unknown ? 1.0 : parse_number<double>(given[i]);
      if (!spacing) lines.refuse_field("spacings", "must be numbers");
      if (axes[i].spatial && space < 3) axes[i].direction[space++] = *spacing;
    }
    return;
  }
  if (words.size() != axes.size()) lines.refuse_field("space directions", "must be one for each axis");
  for (size_t i = 0; i < axes.size(); ++i) {
    axes[i].spatial = lower(words[i]) != "none";
    if (axes[i].spatial) axes[i].direction = parse_vector(lines, "space directions", words[i]);
  }
}

}  // namespace

std::vector<NrrdAxis> read_nrrd_axes(const HeaderLines& lines) {
  const int64_t dimensions = whole_field(lines, "dimension", 1)[0];
  if (dimensions < 1 || dimensions > 16) lines.refuse_field("dimension", "must be 1 to 16");
  const std::vector<int64_t> sizes = whole_field(lines, "sizes", static_cast<size_t>(dimensions));
  std::vector<NrrdAxis> axes(sizes.size());
  int64_t stride = 1;
  for (size_t i = 0; i < axes.size(); ++i) {
    if (sizes[i] < 1 || sizes[i] > INT32_MAX) lines.refuse_field("sizes", "must be 1 or more each");
    axes[i].size = sizes[i];
    axes[i].stride = stride;
    if (__builtin_mul_overflow(stride, sizes[i], &stride)) refuse_cut(lines.path);
  }
  take_kinds(lines, axes);
  take_directions(lines, axes);
  return axes;
}

std::optional<std::array<double, 3>> first_nrrd_vector(const HeaderLines& lines, const std::string& key) {
  const std::vector<std::string> words = vector_words(lines.get(key));
  if (words.empty()) return std::nullopt;
  return parse_vector(lines, key, words[0]);
}

}  // namespace zox::input
