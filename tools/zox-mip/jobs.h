// The pictures that a command line asks for.
#pragma once

#include <string>
#include <vector>

#include "options.h"

namespace zox_mip {

struct Job {
  const NamedView* view;  // of the options
  int frame = 0;
  std::string output, depth_output, raw_output;  // as far as they are wanted
  bool in_animation = false, last_of_animation = false;
};

// Of the volume `name`, in the order in which they are made. The frames of an animation have one output,
// given to the last.
std::vector<Job> make_jobs(const Options& options, const std::string& name);

// Whether the frames go into one file.
bool is_animation(const Options& options);

// Before anything is read: that every output has a good name and place, and is none of `inputs`.
void check_outputs(const std::vector<Job>& jobs, const std::vector<std::string>& inputs);

// The volume's view of a job, whose size on the picture is that of all frames of its turn.
zox_render_view view_of(const Job& job, const Options& options, const zox_render_volume* volume);

}  // namespace zox_mip
