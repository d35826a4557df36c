#include "study.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace zox::input::dicom {
namespace fs = std::filesystem;
namespace {

constexpr size_t kMostFiles = 200'000;

// Nobody knows what a folder that is closed holds.
void require_open(const fs::path& folder) {
  if (access(folder.c_str(), R_OK | X_OK) != 0)
    throw std::runtime_error("'" + printable(folder.string()) +
                             "' cannot be searched: " + std::strerror(errno) + ".");
}

std::vector<std::string> files_below(const fs::path& folder) {
  std::vector<std::string> files;
  require_open(folder);
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
    std::error_code ignored;
    if (entry.is_directory(ignored) && !entry.is_symlink(ignored)) require_open(entry.path());
    if (!entry.is_regular_file(ignored)) continue;
    files.push_back(entry.path().string());
    if (files.size() > kMostFiles)
      throw std::runtime_error(printable(folder.string()) + " holds more than " + std::to_string(kMostFiles) +
                               " files.");
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<std::string> files_beside(const fs::path& file) {
  std::vector<std::string> files;
  std::error_code ignored;
  const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
  for (fs::directory_iterator entry(folder, ignored), end; entry != end; entry.increment(ignored))
    if (entry->is_regular_file(ignored)) files.push_back(entry->path().string());
  std::sort(files.begin(), files.end());
  return files;
}

struct Reading {
  Study study;
  std::vector<Frame> frames;

  void add(const std::string& path) {
    if (access(path.c_str(), R_OK) != 0)
      throw std::runtime_error("'" + printable(path) + "' may not be read: " + std::strerror(errno) + ".");
    FileContent content = read_frames(path);
    ++study.files;
    take(path, content);
  }

  void take(const std::string& path, FileContent& content) {
    const std::string sentence = printable(fs::path(path).filename().string()) + " " + content.flaw + ".";
    if (content.damaged) throw std::runtime_error(sentence);
    if (!content.is_dicom)
      ++study.not_dicom;
    else if (content.frames.empty())
      study.flaws.push_back({sentence, content.series_uid});
    std::move(content.frames.begin(), content.frames.end(), std::back_inserter(frames));
  }
};

// The other slices of the series that the file belongs to.
void add_neighbours(const fs::path& file, Reading& reading) {
  const std::string uid = reading.frames.at(0).series_uid;
  for (const std::string& path : files_beside(file)) {
    std::error_code ignored;
    if (fs::equivalent(path, file, ignored)) continue;
    if (access(path.c_str(), R_OK) != 0) {
      ++reading.study.closed;
      continue;
    }
    FileContent content = read_frames(path);
    if (content.is_dicom && (content.damaged || content.series_uid == uid)) reading.take(path, content);
  }
}

const Series& numbered(const Study& study, const std::string& wanted) {
  const size_t count = study.series.size();
  size_t number = 0;
  const auto [end, error] = std::from_chars(wanted.data(), wanted.data() + wanted.size(), number);
  if (error != std::errc() || end != wanted.data() + wanted.size() || number < 1 || number > count)
    throw std::runtime_error("There is no series " + printable(wanted) + ": the list has numbers 1 to " +
                             std::to_string(count) + ".");
  return study.series[number - 1];
}

const Series& largest(const Study& study, std::vector<std::string>& notes) {
  const auto found =
      std::max_element(study.series.begin(), study.series.end(),
                       [](const Series& a, const Series& b) { return a.voxels() < b.voxels(); });
  if (study.series.size() > 1)
    notes.push_back("Of " + std::to_string(study.series.size()) + " series the largest is shown, " +
                    describe(*found, static_cast<int>(found - study.series.begin()) + 1) + ".");
  return *found;
}

}  // namespace

std::vector<std::string> files_of_study(const std::string& path) {
  std::vector<std::string> files = fs::is_directory(path) ? files_below(path) : files_beside(path);
  // Of what may not be read nobody knows.
  std::erase_if(files, [](const std::string& file) {
    return access(file.c_str(), R_OK) == 0 && !looks_like_dicom(file);
  });
  return files;
}

std::vector<std::string> Study::notes() const {
  std::vector<std::string> notes;
  if (not_dicom > 0)
    notes.push_back(std::to_string(not_dicom) + (not_dicom == 1 ? " file is" : " files are") +
                    " no DICOM and " + (not_dicom == 1 ? "was" : "were") + " passed over.");
  if (closed > 0)
    notes.push_back(std::to_string(closed) + (closed == 1 ? " file" : " files") +
                    " beside it may not be read and " + (closed == 1 ? "was" : "were") + " passed over.");
  if (flaws.size() == 1) notes.push_back("One DICOM file holds no slice: " + flaws[0].sentence);
  if (flaws.size() > 1)
    notes.push_back(std::to_string(flaws.size()) +
                    " DICOM files hold no slice; the first: " + flaws[0].sentence);
  return notes;
}

Study read_study(const std::string& path, const std::vector<std::string>& list) {
  Reading reading;
  const bool folder = fs::is_directory(path), listed = !list.empty();
  const std::vector<std::string> files = listed ? list : folder ? files_below(path) : std::vector{path};
  for (const std::string& file : files) reading.add(file);
  if (reading.frames.empty()) {
    const std::string name = printable(path);
    if (!reading.study.flaws.empty())
      throw std::runtime_error((folder ? name + " holds no slice: " : "") + reading.study.flaws[0].sentence);
    throw std::runtime_error(reading.study.files == 0 ? name + " holds no files."
                                                      : name + " holds no DICOM files.");
  }
  const bool stands_for_others = !folder && !listed;
  if (stands_for_others && reading.frames.size() == 1) add_neighbours(path, reading);
  reading.study.series = split_into_series(std::move(reading.frames));
  // A file stands for the series that it lies in, whatever else bears the same number.
  if (stands_for_others)
    std::stable_partition(reading.study.series.begin(), reading.study.series.end(),
                          [&](const Series& series) {
                            return std::any_of(series.frames.begin(), series.frames.end(),
                                               [&](const Frame& frame) { return frame.path == path; });
                          });
  if (stands_for_others) reading.study.series.resize(1);
  return reading.study;
}

const Series& choose(const Study& study, const std::string& wanted, std::vector<std::string>& notes) {
  const Series& series = wanted.empty() ? largest(study, notes) : numbered(study, wanted);
  for (const Study::Flaw& flaw : study.flaws)
    if (!flaw.series_uid.empty() && flaw.series_uid == series.frames[0].series_uid)
      throw std::runtime_error(flaw.sentence);
  return series;
}

}  // namespace zox::input::dicom
