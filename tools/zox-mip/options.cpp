#include "options.h"

#include <zox_volume.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iostream>
#include <map>
#include <thread>

#include "failure.h"

namespace zox_mip {
namespace {

constexpr int kMaxPicture = 8192;
constexpr int kMaxThreads = 256;
constexpr double kMinStep = 0.05;
constexpr double kMaxStep = 64;

// Elevations above 90 degrees would turn the picture over; the names give the usual pictures, with the
// face upwards when the head is seen from above or below.
const std::map<std::string, View> kViews = {
    {"anterior", {0, 0}}, {"posterior", {180, 0}}, {"left", {90, 0}},
    {"right", {270, 0}},  {"superior", {180, 90}}, {"inferior", {0, -90}},
};
const std::map<std::string, Projection> kProjections = {{"perspective", Projection::kPerspective},
                                                        {"orthographic", Projection::kOrthographic}};
const std::map<std::string, Interpolation> kInterpolations = {{"nearest", Interpolation::kNearest},
                                                              {"trilinear", Interpolation::kTrilinear}};
const std::map<std::string, Layout> kLayouts = {{"blocked", Layout::kBlocked}, {"stack", Layout::kStack}};

template <class Number>
std::optional<Number> parse_number(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if constexpr (std::is_floating_point_v<Number>)
    if (!std::isfinite(number)) return std::nullopt;
  return number;
}

// Two numbers with `separator` between them.
template <class Number>
std::optional<std::array<Number, 2>> parse_pair(const std::string& text, char separator) {
  const size_t middle = text.find(separator);
  if (middle == std::string::npos) return std::nullopt;
  const auto first = parse_number<Number>(std::string_view(text).substr(0, middle));
  const auto second = parse_number<Number>(std::string_view(text).substr(middle + 1));
  if (!first || !second) return std::nullopt;
  return std::array{*first, *second};
}

View parse_view(const std::string& text) {
  if (const auto named = kViews.find(text); named != kViews.end()) return named->second;
  const auto angles = parse_pair<double>(text, ',');
  if (!angles || std::abs((*angles)[0]) > 360 || std::abs((*angles)[1]) > 90)
    reject_usage(
        "--view takes anterior, posterior, left, right, superior, inferior or AZIMUTH,ELEVATION in "
        "degrees (-360 to 360, -90 to 90), not '" +
        text + "'.");
  return {(*angles)[0], (*angles)[1]};
}

template <class Choice>
Choice parse_choice(const std::string& option, const std::map<std::string, Choice>& choices,
                    const std::string& text) {
  if (const auto chosen = choices.find(text); chosen != choices.end()) return chosen->second;
  std::string names;
  for (const auto& [name, choice] : choices) names += (names.empty() ? "" : " or ") + name;
  reject_usage(option + " takes " + names + ", not '" + text + "'.");
}

void parse_size(const std::string& text, Options& options) {
  const auto size = parse_pair<int>(text, 'x');
  if (!size || (*size)[0] < 1 || (*size)[1] < 1 || (*size)[0] > kMaxPicture || (*size)[1] > kMaxPicture)
    reject_usage("--size takes WIDTHxHEIGHT, each 1 to " + std::to_string(kMaxPicture) + ", not '" + text +
                 "'.");
  options.width = (*size)[0];
  options.height = (*size)[1];
}

double parse_step(const std::string& text) {
  const auto step = parse_number<double>(text);
  if (!step || *step < kMinStep || *step > kMaxStep)
    reject_usage("--step takes a number of voxels from 0.05 to 64, not '" + text + "'.");
  return *step;
}

Window parse_window(const std::string& text) {
  const auto window = parse_pair<double>(text, ',');
  if (!window || (*window)[1] <= 0)
    reject_usage("--window takes CENTER,WIDTH with a width above 0, not '" + text + "'.");
  return {(*window)[0], (*window)[1]};
}

DepthRange parse_depth_range(const std::string& text) {
  const auto range = parse_pair<double>(text, ',');
  if (!range || (*range)[0] > (*range)[1])
    reject_usage("--depth-range takes NEAR,FAR in millimetres with NEAR not beyond FAR, not '" + text + "'.");
  return {(*range)[0], (*range)[1]};
}

int parse_threads(const std::string& text) {
  const auto threads = parse_number<int>(text);
  if (!threads || *threads < 1 || *threads > kMaxThreads)
    reject_usage("-j takes a number of threads from 1 to " + std::to_string(kMaxThreads) + ", not '" + text +
                 "'.");
  return *threads;
}

// The words of the command line before they are judged.
struct Words {
  std::string input, output;
  std::string view = "anterior", projection = "perspective", interpolation = "trilinear", layout = "blocked";
  std::string size = "512x512", step = "0.5", window, depth_range, threads;
  bool phantom = false, quiet = false;
};

void declare(CLI::App& app, Words& words) {
  app.add_option("volume", words.input, "Volume to show: NIfTI, NRRD, MetaImage or whatever else ITK reads");
  app.add_flag("--phantom", words.phantom, "Show the built-in phantom instead of a file");
  app.add_option("-o,--output", words.output, "PNG file to write")->required();
  app.add_option("--view", words.view,
                 "anterior, posterior, left, right, superior, inferior or AZIMUTH,ELEVATION in degrees")
      ->capture_default_str();
  app.add_option("--projection", words.projection, "perspective or orthographic")->capture_default_str();
  app.add_option("--interpolation", words.interpolation, "nearest or trilinear")->capture_default_str();
  app.add_option("--layout", words.layout, "How the volume is held: blocked or stack")->capture_default_str();
  app.add_option("--size", words.size, "WIDTHxHEIGHT of the picture")->capture_default_str();
  app.add_option("--step", words.step, "Distance of samples, in voxels")->capture_default_str();
  app.add_option("--window", words.window, "CENTER,WIDTH of the values shown (default: from percentiles)");
  app.add_option("--depth-range", words.depth_range,
                 "NEAR,FAR: show these millimetres along the ray only, 0 being the middle of the volume");
  app.add_option("-j,--threads", words.threads, "Threads (default: all cores)");
  app.add_flag("--quiet", words.quiet, "Print nothing but errors");
}

Options judge(const Words& words) {
  if (words.phantom == !words.input.empty()) reject_usage("Name one volume to show, or give --phantom.");
  if (words.output.empty()) reject_usage("-o takes the name of a file to write.");
  Options options;
  options.input = words.input;
  options.output = words.output;
  options.view = parse_view(words.view);
  options.projection = parse_choice("--projection", kProjections, words.projection);
  options.interpolation = parse_choice("--interpolation", kInterpolations, words.interpolation);
  options.layout = parse_choice("--layout", kLayouts, words.layout);
  parse_size(words.size, options);
  options.step = parse_step(words.step);
  if (!words.window.empty()) options.window = parse_window(words.window);
  if (!words.depth_range.empty()) options.depth_range = parse_depth_range(words.depth_range);
  const int cores = static_cast<int>(std::thread::hardware_concurrency());
  options.threads = words.threads.empty() ? std::clamp(cores, 1, kMaxThreads) : parse_threads(words.threads);
  options.quiet = words.quiet;
  return options;
}

std::string version_text() {
  return std::string("zox-mip " ZOX_RELEASE " (library ") + zox_GetVersion() + ")";
}

}  // namespace

std::optional<Options> parse_options(int argc, const char* const* argv) {
  CLI::App app("Renders a volume as a maximum-intensity picture.", "zox-mip");
  app.set_version_flag("--version", version_text());
  Words words;
  declare(app, words);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    std::cout << app.help();
    return std::nullopt;
  } catch (const CLI::CallForVersion& version) {
    std::cout << version.what() << '\n';
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    reject_usage(std::string(error.what()) + (std::string(error.what()).ends_with(".") ? "" : "."));
  }
  return judge(words);
}

}  // namespace zox_mip
