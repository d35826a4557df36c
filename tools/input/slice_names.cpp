#include "slice_names.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include "format.h"
#include "readers.h"
#include "text.h"

namespace zox::input {
namespace {

namespace fs = std::filesystem;

// A name without its extension, cut at its numbers.
struct Name {
  std::string path;
  std::vector<std::string> words, numbers;  // words[0] numbers[0] words[1] ...
};

bool is_digit(char letter) { return letter >= '0' && letter <= '9'; }

Name name_of(const fs::path& path) {
  Name name{path.string(), {""}, {}};
  bool in_number = false;
  for (const char letter : path.stem().string()) {
    if (is_digit(letter)) {
      if (!in_number) name.numbers.emplace_back();
      name.numbers.back() += letter;
    } else {
      if (in_number) name.words.emplace_back();
      name.words.back() += letter;
    }
    in_number = is_digit(letter);
  }
  if (in_number) name.words.emplace_back();
  return name;
}

bool is_named_as_slice(const fs::path& path) {
  const std::string kind = lower(path.extension().string());
  return kind == ".tif" || kind == ".tiff" || kind == ".nrrd" || kind == ".nhdr";
}

bool is_hidden(const fs::path& path) { return path.filename().string().starts_with("."); }

std::string own(const std::string& path) { return quoted(fs::path(path).filename().string()); }

template <class Take>
void each_file(const std::string& folder, Take take) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    std::error_code ignored;
    if (entry->is_regular_file(ignored) && !is_hidden(entry->path())) take(entry->path());
  }
  if (error) refuse(quoted(folder) + " cannot be searched: " + error.message() + ".");
}

uint64_t number_in(const Name& name, size_t which) {
  const auto number = parse_number<uint64_t>(name.numbers[which]);
  if (!number) refuse(quoted(name.path) + " has a name with a number too long to count by.");
  return *number;
}

// Which of the numbers of the names counts the slices: the only one that is not the same in all. Where there
// is none, a name that differs otherwise from the first.
struct Counting {
  std::optional<size_t> number;
  const Name* odd = nullptr;
};

Counting counting_number(const std::vector<Name>& names) {
  Counting counting;
  std::optional<size_t>& found = counting.number;
  for (const Name& name : names) {
    bool differs = name.words != names[0].words;
    for (size_t i = 0; !differs && i < name.numbers.size(); ++i) {
      if (name.numbers[i] == names[0].numbers[i]) continue;
      differs = found && *found != i;
      found = i;
    }
    if (differs || (!found && &name != &names[0])) return {std::nullopt, &name};
  }
  return counting;
}

// A name of the row that no file has.
std::string missing_name(const Name& before, size_t which, uint64_t number) {
  std::string digits = std::to_string(number);
  const size_t width = before.numbers[which].size();
  if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
  std::string text;
  for (size_t i = 0; i < before.words.size(); ++i) {
    text += before.words[i];
    if (i < before.numbers.size()) text += i == which ? digits : before.numbers[i];
  }
  return quoted(text + fs::path(before.path).extension().string());
}

// Numbers may be apart by any step, the same throughout.
void check_row(const std::string& folder, const std::vector<Name>& names, size_t which) {
  uint64_t step = UINT64_MAX;
  for (size_t i = 1; i < names.size(); ++i)
    step = std::min(step, number_in(names[i], which) - number_in(names[i - 1], which));
  for (size_t i = 1; i < names.size(); ++i) {
    const uint64_t before = number_in(names[i - 1], which);
    if (step == 0 && number_in(names[i], which) == before)
      refuse(quoted(folder) + " holds a slice twice: " + own(names[i - 1].path) + " and " +
             own(names[i].path) + ".");
    if (step > 0 && number_in(names[i], which) - before != step)
      refuse(quoted(folder) + " lacks a slice: " + missing_name(names[i - 1], which, before + step) +
             " is missing between " + own(names[i - 1].path) + " and " + own(names[i].path) + ".");
  }
}

bool is_dicom_below(const std::string& folder) {
  std::error_code error;
  constexpr auto kOptions = fs::directory_options::skip_permission_denied;
  for (fs::recursive_directory_iterator entry(folder, kOptions, error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code ignored;
    if (entry->is_regular_file(ignored) && is_dicom(entry->path().string())) return true;
  }
  return false;
}

}  // namespace

bool holds_slices(const std::string& folder) {
  std::vector<Name> names;
  bool dicom = false;
  each_file(folder, [&](const fs::path& path) {
    if (is_named_as_slice(path))
      names.push_back(name_of(path));
    else if (!dicom)
      dicom = is_dicom(path.string());
  });
  if (names.empty() || dicom) return false;
  return counting_number(names).number || !is_dicom_below(folder);
}

SliceFiles slice_files(const std::string& folder) {
  SliceFiles files;
  std::vector<Name> names;
  each_file(folder, [&](const fs::path& path) {
    if (is_named_as_slice(path))
      names.push_back(name_of(path));
    else
      ++files.passed_over;
  });
  if (names.size() < 2)
    refuse(quoted(folder) + " holds a single slice, " + own(names.at(0).path) + "; a volume has 2 at least.");
  std::sort(names.begin(), names.end(), [](const Name& a, const Name& b) { return a.path < b.path; });
  const Counting counting = counting_number(names);
  if (!counting.number)
    refuse(quoted(folder) + " holds " + own(names[0].path) + " and " + own(counting.odd->path) +
           ": slices of one volume have names that differ in one number only.");
  const size_t which = *counting.number;
  std::stable_sort(names.begin(), names.end(),
                   [&](const Name& a, const Name& b) { return number_in(a, which) < number_in(b, which); });
  check_row(folder, names, which);
  for (Name& name : names) files.paths.push_back(std::move(name.path));
  return files;
}

}  // namespace zox::input
