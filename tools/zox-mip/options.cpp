#include "options.h"

#include <display/presets.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <iostream>
#include <thread>

#include "exit_failure.h"
#include "picture_file.h"
#include "words.h"

namespace zox_mip {
namespace {

constexpr int kMaxThreads = 256;

const std::map<std::string, int32_t> kProjections = {{"perspective", ZOX_RENDER_PERSPECTIVE},
                                                     {"orthographic", ZOX_RENDER_ORTHOGRAPHIC}};
const std::map<std::string, int32_t> kInterpolations = {{"nearest", ZOX_RENDER_NEAREST},
                                                        {"trilinear", ZOX_RENDER_TRILINEAR}};
const std::map<std::string, int32_t> kReductions = {{"max", ZOX_RENDER_MAXIMUM},
                                                    {"min", ZOX_RENDER_MINIMUM},
                                                    {"mean", ZOX_RENDER_MEAN},
                                                    {"absmax", ZOX_RENDER_LARGEST_MAGNITUDE}};
const std::map<std::string, int32_t> kLayouts = {
    {"auto", ZOX_RENDER_AUTO}, {"blocked", ZOX_RENDER_BRICKS}, {"stack", ZOX_RENDER_STACK}};
const std::map<std::string, int32_t> kPrecisions = {{"auto", ZOX_RENDER_PRECISION_AUTO},
                                                    {"voxel", ZOX_RENDER_PRECISION_VOXEL},
                                                    {"fine", ZOX_RENDER_PRECISION_FINE}};
const std::map<std::string, int> kAxes = {{"x", 0}, {"y", 1}, {"z", 2}};

// The words of the command line before they are judged.
struct Words {
  std::vector<std::string> inputs;
  std::string output, depth, raw;
  std::vector<std::string> views = {"anterior"};
  std::string projection = "perspective", interpolation = "trilinear", reduction = "max", layout = "auto",
              precision = "auto";
  std::string size = "512x512", step = "0.5", zoom = "1", center, slab, depth_range, window;
  std::string frames, spin = "z", colormap = "gray", png_level = "1", threads, memory, volume, series,
                      dataset, spacing, seconds = "60";
  bool phantom = false, quiet = false, stats = false, no_skip = false, marks = false, list_series = false,
       list_presets = false;
};

void declare_files(CLI::App& app, Words& words) {
  app.add_option(
      "volume", words.inputs,
      "Volumes to show: folders of DICOM, TIFF or NRRD slices, DICOM files, NIfTI, NRRD, MetaImage, HDF5 and "
      "others; the DICOM files of one series are one volume");
  app.add_flag("--phantom", words.phantom, "Show the built-in phantom instead of a file");
  app.add_option("-o,--output", words.output,
                 "PNG to write; {name}, {view} and {frame} in it stand for the volume's, the view's and the "
                 "frame's, - for standard output");
  app.add_option("--raw", words.raw,
                 "Also write the samples before the window (.png of 16 bits, .nrrd, .npy)");
  app.add_option("--depth", words.depth,
                 "Also write how deep each sample lies (.png of 16 bits, .nrrd, .npy)");
  app.add_option("--volume", words.volume, "Which volume of a file that holds several, from 0");
  app.add_option("--series", words.series,
                 "Which series of a DICOM folder, by its number (default: the largest)");
  app.add_option("--dataset", words.dataset,
                 "Which dataset of an HDF5 file, by its path in there (default: the only volume)");
  app.add_option("--spacing", words.spacing,
                 "X,Y,Z in millimetres from voxel to voxel, instead of what the file says");
  app.add_flag("--list-series", words.list_series, "List the series of DICOM folders, and do nothing else");
  app.add_option("--read-seconds", words.seconds, "Give up reading after so many seconds")
      ->capture_default_str();
}

void declare_camera(CLI::App& app, Words& words) {
  app.add_option(
         "--view", words.views,
         "anterior (front, coronal), posterior (back), left (sagittal), right, superior (top, axial), "
         "inferior (bottom) or AZIMUTH,ELEVATION in degrees; several times for several pictures")
      ->allow_extra_args(false)
      ->capture_default_str();
  app.add_option("--projection", words.projection, "perspective or orthographic")->capture_default_str();
  app.add_option("--size", words.size, "WIDTHxHEIGHT of the picture")->capture_default_str();
  app.add_option("--zoom", words.zoom, "1: the volume just fits; 2: twice as large")->capture_default_str();
  app.add_option("--center", words.center,
                 "X,Y,Z in millimetres of what stands in the middle (default: the volume's middle)");
  app.add_option("--slab", words.slab, "Show only so many millimetres along the view, around the middle");
  app.add_option("--depth-range", words.depth_range,
                 "NEAR,FAR: show these millimetres along the ray only, 0 being the middle");
  app.add_option("--frames", words.frames,
                 "So many pictures of a full turn: an animated PNG, or {frame} files");
  app.add_option("--spin", words.spin, "Turn around the patient's axis x (left), y (back) or z (up)")
      ->capture_default_str();
}

void declare_sampling(CLI::App& app, Words& words) {
  app.add_option("--reduction", words.reduction, "What a pixel shows of its ray: max, min, mean or absmax")
      ->capture_default_str();
  app.add_option("--interpolation", words.interpolation, "nearest or trilinear")->capture_default_str();
  app.add_option("--step", words.step, "Distance of samples, in voxels")->capture_default_str();
  app.add_option("--layout", words.layout, "How the volume is held: auto, blocked or stack")
      ->capture_default_str();
  app.add_option("--precision", words.precision,
                 "Samples of 8-bit volumes: auto, voxel (whole values) or fine (7 more bits)")
      ->capture_default_str();
  app.add_flag("--no-skip", words.no_skip, "Take every sample; the picture is the same");
}

void declare_display(CLI::App& app, Words& words) {
  app.add_option("--window", words.window,
                 "CENTER,WIDTH of the values shown, a name (--list-presets), or 'file' for the file's own "
                 "(default: from percentiles)");
  app.add_flag("--list-presets", words.list_presets,
               "List the windows that have names, with centre and width, and do nothing else");
  app.add_option("--colormap", words.colormap, "gray, inverse, hot or diverging")->capture_default_str();
  app.add_option("--png-level", words.png_level, "How hard to pack PNG files: 0 to 12")
      ->capture_default_str();
  app.add_option("-j,--threads", words.threads, "Threads (default: all cores)");
  app.add_option("--memory", words.memory,
                 "Bytes that voxels may take (512M, 2G): larger volumes are rendered part by part");
  app.add_flag("--marks", words.marks, "Letters for the patient's sides and a scale bar on the picture");
  app.add_flag("--stats", words.stats, "Print one line of JSON instead of the report");
  app.add_flag("--quiet", words.quiet, "Print nothing but errors");
}

void judge_camera(const Words& words, Options& options) {
  zox_render_view& view = options.view;
  options.views.clear();
  for (const std::string& text : words.views) options.views.push_back(view_word(text));
  view.projection = choice_word("--projection", kProjections, words.projection);
  take_size(words.size, options);
  view.zoom = number_word("--zoom", words.zoom, 0.01, 1000, "a number from 0.01 to 1000");
  take_center(words.center, options);
  take_depths(words.slab, words.depth_range, options);
  options.spin.axis = choice_word("--spin", kAxes, words.spin);
  if (!words.frames.empty())
    options.spin.frames = whole_word("--frames", words.frames, 2, 3600, "a number of pictures");
}

void judge_sampling(const Words& words, Options& options) {
  zox_render_view& view = options.view;
  view.reduction = choice_word("--reduction", kReductions, words.reduction);
  view.interpolation = choice_word("--interpolation", kInterpolations, words.interpolation);
  view.step = number_word("--step", words.step, 0.05, 64, "a number of voxels from 0.05 to 64");
  view.skip = words.no_skip ? 0 : 1;
  options.volume.layout = choice_word("--layout", kLayouts, words.layout);
  options.volume.precision = choice_word("--precision", kPrecisions, words.precision);
  options.volume.bounds = view.skip;
  take_window(words.window, options);
}

// Names of several pictures must differ.
void check_names(const Words& words, const Options& options) {
  if (!words.depth.empty() && options.view.reduction == ZOX_RENDER_MEAN)
    reject_usage("--depth has no meaning for a mean, which no single sample gives.");
  const auto holds = [](const std::string& name, const char* part) {
    return name.find(part) != std::string::npos;
  };
  std::vector<std::string> names = {words.output, words.depth, words.raw};
  std::erase(names, "");
  const bool frames = holds(words.output, "{frame}");
  if (frames && options.spin.frames == 1) reject_usage("{frame} in a name goes with --frames.");
  for (const std::string& name : names) {
    if (options.views.size() > 1 && !holds(name, "{view}"))
      reject_usage("Several views need {view} in the name of each output, which '" + name + "' lacks.");
    if (options.spin.frames > 1 && name != words.output && !holds(name, "{frame}"))
      reject_usage("--frames needs {frame} in the name '" + name + "'.");
  }
  for (size_t i = 0; i < names.size(); ++i)
    if (std::count(names.begin(), names.end(), names[i]) > 1)
      reject_usage("Two outputs have the name '" + names[i] + "'.");
}

void print_presets() {
  for (const zox::display::Preset& preset : zox::display::presets())
    std::printf("%-14s %6g,%-6g %s\n", preset.name, preset.center, preset.width, preset.shows);
}

Options judge(const Words& words) {
  if (words.phantom == !words.inputs.empty()) reject_usage("Name a volume to show, or give --phantom.");
  if (std::count(words.inputs.begin(), words.inputs.end(), ""))
    reject_usage("The name of a volume is empty.");
  if (words.output.empty() && !words.list_series) reject_usage("-o takes the name of the output to write.");
  Options options;
  zox_render_view_init(&options.view);
  zox_render_volume_options_init(&options.volume);
  options.inputs = words.inputs;
  options.output = words.output;
  options.depth_output = words.depth;
  options.raw_output = words.raw;
  judge_camera(words, options);
  judge_sampling(words, options);
  check_names(words, options);
  options.colormap = choice_word("--colormap", kColormaps, words.colormap);
  options.png_level = whole_word("--png-level", words.png_level, zox::output::kLeastLevel,
                                 zox::output::kMostLevel, "a number");
  const int cores = static_cast<int>(std::thread::hardware_concurrency());
  options.threads = words.threads.empty()
                        ? std::clamp(cores, 1, kMaxThreads)
                        : whole_word("-j", words.threads, 1, kMaxThreads, "a number of threads");
  options.threads_given = !words.threads.empty();
  if (!words.volume.empty())
    options.volume_number = whole_word("--volume", words.volume, 0, 1000000000, "a number");
  options.series = words.series;
  options.dataset = words.dataset;
  take_spacing(words.spacing, options);
  options.list_series = words.list_series;
  options.seconds_to_read =
      number_word("--read-seconds", words.seconds, 0.001, 1e6, "a number of seconds from 0.001 to 1000000");
  take_memory(words.memory, options);
  options.marks = words.marks;
  options.quiet = words.quiet;
  options.stats = words.stats;
  return options;
}

}  // namespace

std::optional<Options> parse_options(int argc, const char* const* argv, const std::string& program) {
  CLI::App app("Renders a volume as a maximum-intensity picture, or a minimum or mean one.", program);
  app.set_version_flag("--version", program + " " ZOX_VERSION);
  Words words;
  declare_files(app, words);
  declare_camera(app, words);
  declare_sampling(app, words);
  declare_display(app, words);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    std::cout << app.help();
    return std::nullopt;
  } catch (const CLI::CallForVersion& version) {
    std::cout << version.what() << '\n';
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    std::string sentence = error.what();
    for (char& letter : sentence)
      if (letter == '\n') letter = ' ';
    reject_usage(sentence + (sentence.ends_with(".") ? "" : "."));
  }
  if (words.list_presets) {
    print_presets();
    return std::nullopt;
  }
  return judge(words);
}

}  // namespace zox_mip
