// What the tool says of its work.
#pragma once

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
  Times times;
};

// A line for the volume and one for each picture.
std::string report_text(const Report& report, const Options& options);

// One line of JSON.
std::string report_json(const Report& report, const Options& options);

}  // namespace zox_mip
