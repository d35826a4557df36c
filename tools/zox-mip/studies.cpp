#include "studies.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "exit_failure.h"

namespace zox_mip {
namespace fs = std::filesystem;
namespace input = zox::input;
namespace {

std::string without_suffix(const fs::path& file) {
  fs::path name = file.filename();
  if (name.extension() == ".gz" || name.extension() == ".GZ") name.replace_extension();
  return name.stem().string();
}

// Folders have names also where they are called "." or "..".
std::string folder_name(const fs::path& folder) {
  std::error_code ignored;
  const fs::path whole = fs::weakly_canonical(fs::absolute(folder, ignored), ignored);
  return (whole.has_filename() ? whole : whole.parent_path()).filename().string();
}

std::string safe(std::string name) {
  for (char& letter : name)
    if (static_cast<unsigned char>(letter) < ' ' || letter == 127 || letter == '/') letter = '_';
  const bool has_meaning = name.find_first_not_of('.') == std::string::npos || name == "-";
  return has_meaning ? std::string(std::max<size_t>(name.size(), 1), '_') : name;
}

fs::path folder_of(const std::string& file) {
  const fs::path folder = fs::path(file).parent_path();
  return folder.empty() ? "." : folder;
}

// A file of which nobody knows the series may be a slice of any that lies in its folder.
void add_unknown(const std::string& file, std::vector<Study>& studies) {
  bool added = false;
  for (Study& study : studies) {
    if (study.files.size() < 2 || folder_of(study.files[0]) != folder_of(file)) continue;
    study.files.push_back(file);
    added = true;
  }
  if (!added) studies.push_back({{file}, "", {}});
}

std::vector<Study> group(const std::vector<std::string>& paths, const std::vector<input::SeriesOf>& series) {
  std::vector<Study> studies;
  std::map<std::string, size_t> by_uid;
  for (size_t i = 0; i < paths.size(); ++i) {
    if (series[i].is_dicom && !series[i].uid) continue;
    if (series[i].is_dicom) {
      const auto [known, is_new] = by_uid.emplace(*series[i].uid, studies.size());
      if (!is_new) {
        studies[known->second].files.push_back(paths[i]);
        continue;
      }
    }
    studies.push_back({{paths[i]}, "", {}});
  }
  for (size_t i = 0; i < paths.size(); ++i)
    if (series[i].is_dicom && !series[i].uid) add_unknown(paths[i], studies);
  return studies;
}

void require_names(const std::vector<Study>& studies, const Options& options) {
  for (const std::string& output : {options.output, options.raw_output, options.depth_output})
    if (!output.empty() && output.find("{name}") == std::string::npos)
      reject_usage(studies[0].quoted_title() + " and " + studies[1].quoted_title() +
                   " are no slices of one series: several volumes need {name} in the name of each output, "
                   "which '" +
                   output + "' lacks.");
  std::map<std::string, const Study*> by_name;
  for (const Study& study : studies) {
    const auto [other, is_new] = by_name.emplace(study.name, &study);
    if (!is_new)
      reject_usage(other->second->quoted_title() + " and " + study.quoted_title() +
                   " would have pictures of one name, since {name} is '" + study.name + "' for both.");
  }
}

std::vector<std::string> files_read(const Study& study) {
  if (study.files.size() != 1) return study.files;
  try {
    return input::files_of(study.files[0]);
  } catch (const input::Failure&) {
    // Why it cannot be read is told when it is read.
    return study.files;
  }
}

}  // namespace

std::string Study::title() const {
  if (files.empty()) return "phantom";
  if (files.size() == 1) return files[0];
  return files[0] + " and " + std::to_string(files.size() - 1) + " more";
}

std::string Study::quoted_title() const {
  if (files.empty()) return "phantom";
  return "'" + files[0] + "'" + title().substr(files[0].size());
}

std::string name_of(const std::vector<std::string>& files) {
  if (files.empty()) return "phantom";
  std::error_code ignored;
  if (files.size() > 1) return safe(folder_name(folder_of(files[0])));
  return safe(fs::is_directory(files[0], ignored) ? folder_name(files[0]) : without_suffix(files[0]));
}

input::ReadOptions read_options(const Study& study, const Options& options) {
  input::ReadOptions read;
  read.seconds = options.seconds_to_read;
  read.volume = options.volume_number;
  read.series = options.series;
  read.dataset = options.dataset;
  read.spacing = options.spacing;
  read.memory_limit = options.memory;
  read.leave_in_file = true;
  if (study.files.size() > 1) read.list = study.files;
  return read;
}

std::vector<Study> find_studies(const Options& options) {
  if (options.inputs.empty()) return {{{}, name_of({}), {}}};
  std::vector<input::SeriesOf> series(options.inputs.size());
  if (options.inputs.size() > 1) series = input::series_of(options.inputs, read_options({}, options));
  std::vector<Study> studies = group(options.inputs, series);
  for (Study& study : studies) study.name = name_of(study.files);
  return studies;
}

void plan(std::vector<Study>& studies, const Options& options) {
  if (studies.size() > 1) require_names(studies, options);
  std::vector<Job> jobs;
  std::vector<std::string> inputs;
  for (Study& study : studies) {
    study.jobs = make_jobs(options, study.name);
    jobs.insert(jobs.end(), study.jobs.begin(), study.jobs.end());
    const std::vector<std::string> files = files_read(study);
    inputs.insert(inputs.end(), files.begin(), files.end());
  }
  check_outputs(jobs, inputs);
}

}  // namespace zox_mip
