#include "jobs.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <numbers>
#include <span>

#include "exit_failure.h"
#include "output.h"
#include "render_objects.h"

namespace zox_mip {
namespace {

using zox::output::Kind;

struct Word {
  std::string mark, meaning;
};

// In one go: what stands for a mark may look like another.
std::string replaced(const std::string& pattern, std::span<const Word> words) {
  std::string text;
  for (size_t at = 0; at < pattern.size();) {
    const auto found = std::find_if(words.begin(), words.end(), [&](const Word& word) {
      return pattern.compare(at, word.mark.size(), word.mark) == 0;
    });
    text += found == words.end() ? pattern.substr(at, 1) : found->meaning;
    at += found == words.end() ? 1 : found->mark.size();
  }
  return text;
}

using FileNumber = std::pair<dev_t, ino_t>;
using FileNumbers = std::map<FileNumber, std::string>;

FileNumbers numbers_of(const std::vector<std::string>& files) {
  FileNumbers numbers;
  for (const std::string& file : files)
    if (struct stat status{}; stat(file.c_str(), &status) == 0)
      numbers.emplace(FileNumber{status.st_dev, status.st_ino}, file);
  return numbers;
}

// The input that an output is, under whatever name; there is one at most.
std::vector<std::string> same_file(const std::string& output, const FileNumbers& inputs) {
  struct stat status {};
  if (stat(output.c_str(), &status) != 0) return {};
  const auto found = inputs.find({status.st_dev, status.st_ino});
  return found == inputs.end() ? std::vector<std::string>() : std::vector{found->second};
}

// As many digits for every frame, so that names sort.
std::string frame_name(int frame, int frames) {
  const std::string most = std::to_string(frames - 1);
  const std::string number = std::to_string(frame);
  return std::string(most.size() - number.size(), '0') + number;
}

// Exact at right angles, so that views along the axes have steps along the axes.
std::array<double, 2> sine_cosine(double degrees) {
  const double radians = degrees * std::numbers::pi / 180;
  if (std::fmod(degrees, 90) == 0) return {std::round(std::sin(radians)), std::round(std::cos(radians))};
  return {std::sin(radians), std::cos(radians)};
}

void turn(double (&vector)[3], int axis, double degrees) {
  const auto [sine, cosine] = sine_cosine(degrees);
  double& a = vector[(axis + 1) % 3];
  double& b = vector[(axis + 2) % 3];
  const double turned = a * cosine - b * sine;
  b = a * sine + b * cosine;
  a = turned;
}

zox_render_geometry geometry_of(const zox_render_volume* volume, const zox_render_view& view) {
  zox_render_geometry geometry;
  zox_render_geometry_init(&geometry);
  check(zox_render_view_geometry(volume, &view, &geometry), "view");
  return geometry;
}

zox_render_view turned_view(const Job& job, int frame, const Options& options,
                            const zox_render_volume* volume) {
  zox_render_view view = options.view;
  view.azimuth = job.view->azimuth;
  view.elevation = job.view->elevation;
  if (frame == 0) return view;
  const zox_render_geometry geometry = geometry_of(volume, view);
  for (size_t i = 0; i < 3; ++i) {
    view.orientation[0][i] = geometry.right[i];
    view.orientation[1][i] = geometry.up[i];
    view.orientation[2][i] = geometry.forward[i];
  }
  view.use_orientation = 1;
  for (auto& vector : view.orientation) turn(vector, options.spin.axis, 360.0 * frame / options.spin.frames);
  return view;
}

}  // namespace

bool is_animation(const Options& options) {
  return options.spin.frames > 1 && options.output.find("{frame}") == std::string::npos;
}

std::vector<Job> make_jobs(const Options& options, const std::string& name_of_volume) {
  std::vector<Job> jobs;
  const int frames = options.spin.frames;
  for (const NamedView& view : options.views)
    for (int frame = 0; frame < frames; ++frame) {
      const auto name = [&](const std::string& pattern) {
        const Word words[] = {
            {"{name}", name_of_volume}, {"{view}", view.name}, {"{frame}", frame_name(frame, frames)}};
        return replaced(pattern, words);
      };
      Job job{&view, frame, name(options.output), name(options.depth_output), name(options.raw_output)};
      job.in_animation = is_animation(options);
      job.last_of_animation = job.in_animation && frame == frames - 1;
      jobs.push_back(std::move(job));
    }
  return jobs;
}

void check_outputs(const std::vector<Job>& jobs, const std::vector<std::string>& inputs) {
  std::vector<std::string> names;
  for (const Job& job : jobs) {
    zox::output::kind_of(job.output, {Kind::kPng});
    if (!job.in_animation || job.last_of_animation) names.push_back(job.output);
    for (const std::string& numbers : {job.depth_output, job.raw_output})
      if (!numbers.empty()) {
        zox::output::kind_of(numbers, {Kind::kPng, Kind::kNrrd, Kind::kNpy});
        names.push_back(numbers);
      }
  }
  std::vector<std::string> sorted = names;
  std::sort(sorted.begin(), sorted.end());
  if (const auto twice = std::adjacent_find(sorted.begin(), sorted.end()); twice != sorted.end())
    reject_usage("Two pictures have the name '" + *twice + "'.");
  const FileNumbers numbers = numbers_of(inputs);
  for (const std::string& name : names) zox::output::check_place(name, same_file(name, numbers));
}

zox_render_view view_of(const Job& job, const Options& options, const zox_render_volume* volume) {
  zox_render_view view = turned_view(job, job.frame, options, volume);
  if (options.spin.frames == 1) return view;
  // Each frame just fits by itself; all are as large as the smallest.
  for (int frame = 0; frame < options.spin.frames; ++frame)
    view.pixel_size =
        std::max(view.pixel_size, geometry_of(volume, turned_view(job, frame, options, volume)).pixel_size);
  return view;
}

}  // namespace zox_mip
