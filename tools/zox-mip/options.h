// What the command line asks for.
#pragma once

#include <zox_render.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "colormap.h"

namespace zox_mip {

// A direction to look from: its angles are in `view`, its name goes into the names of files.
struct NamedView {
  std::string name;
  double azimuth = 0, elevation = 0;
};

// A full turn of the viewer around an axis of the patient (0: to the left, 1: to the back, 2: up).
struct Spin {
  int frames = 1;
  int axis = 2;
};

struct Options {
  std::vector<std::string> inputs;  // files and folders; none: the phantom
  // {name}, {view} and {frame} stand for those of each picture; -: standard output.
  std::string output;
  std::string depth_output, raw_output;  // may be empty
  std::vector<NamedView> views;
  Spin spin;
  zox_render_view view{};  // all but the angles and the orientation
  bool window_of_file = false;
  zox_render_volume_options volume{};
  int volume_number = -1;  // of a file that holds several
  std::string series;
  std::string dataset;
  std::optional<std::array<double, 3>> spacing;
  bool list_series = false;  // and nothing else
  double seconds_to_read = 60;
  Colormap colormap = Colormap::kGray;
  int png_level = 1;
  int threads = 1;
  bool threads_given = false;
  uint64_t memory = 0;  // bytes that voxels may take; above 0: rendered in parts
  bool marks = false;   // letters and a scale bar on the picture
  bool quiet = false, stats = false;
};

// Throws Failure on a bad command line. Empty when the command line only asked for --help, --version or
// --list-presets, which has then been printed for the program of this name.
std::optional<Options> parse_options(int argc, const char* const* argv,
                                     const std::string& program = "zox-mip");

}  // namespace zox_mip
