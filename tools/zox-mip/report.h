// What the tool says of its work.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "jobs.h"
#include "options.h"

namespace zox_mip {

struct Times {
  double read = 0, volume = 0, render = 0, write = 0;  // seconds
};

struct Report {
  std::string name;  // of the volume
  int32_t type = 0;  // of its voxels in the file
  zox_render_volume_info info{};
  double spacing[3] = {};
  struct Picture {
    Job job;
    zox_render_stats stats{};
  };
  std::vector<Picture> pictures;
  std::vector<std::string> notes;  // sentences on what was found
  Times times;
};

// A line for the volume and one for each picture.
std::string report_text(const Report& report, const Options& options);

// What came of a study.
struct Outcome {
  std::string title;
  std::optional<Report> report;
  std::string failure;  // why there is no report
};

// One line of JSON.
std::string outcome_json(const Outcome& outcome, const Options& options);

// What came of all.
struct Summary {
  std::vector<Outcome> outcomes;
  double seconds = 0;
  size_t failed() const;
  size_t pictures() const;
};

// A table with a line for each study, and a line for all.
std::string summary_text(const Summary& summary);

// One line of JSON, for all.
std::string summary_json(const Summary& summary);

}  // namespace zox_mip
