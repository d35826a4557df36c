#include "planes.h"

#include <algorithm>
#include <cstdio>
#include <limits>

#include "arrays.h"
#include "exit_failure.h"
#include "output.h"

namespace zox_mip {
namespace {

namespace output = zox::output;
using output::Kind;

std::string number_text(double number) {
  char text[40];
  std::snprintf(text, sizeof text, "%.17g", number);
  return text;
}

// "value = a + b * stored"
std::string linear(const std::string& what, double intercept, double slope) {
  return what + " = " + number_text(intercept) + " + " + number_text(slope) + " * pixel";
}

void write_deep(const std::string& path, const Options& options, const std::vector<uint16_t>& deep,
                const std::string& meaning) {
  output::Image image;
  image.width = options.view.width;
  image.height = options.view.height;
  image.deep = deep.data();
  image.texts = {{"Description", meaning + "; pixel 0: no sample"}};
  output::write_file(path, output::encode_png(image, options.png_level));
}

output::Numbers numbers_of(const Options& options) {
  output::Numbers numbers;
  numbers.width = options.view.width;
  numbers.height = options.view.height;
  return numbers;
}

// A file's pixels are numbers from 1 of the steps behind the nearest sample.
void write_deep_depths(const std::string& path, const Planes& planes, const Options& options, double step) {
  int32_t least = INT32_MAX;
  int32_t most = INT32_MIN;
  for (const int32_t depth : planes.depths) {
    if (depth == ZOX_RENDER_NO_DEPTH) continue;
    least = std::min(least, depth);
    most = std::max(most, depth);
  }
  if (least > most) least = most = 0;
  if (int64_t{most} - least >= 65535)
    fail("'" + path + "' cannot be written: the depths span " + std::to_string(int64_t{most} - least + 1) +
         " steps, of which 16 bits hold 65535; a name in .nrrd or .npy takes them.");
  std::vector<uint16_t> deep;
  for (const int32_t depth : planes.depths)
    deep.push_back(depth == ZOX_RENDER_NO_DEPTH ? uint16_t{0} : static_cast<uint16_t>(depth - least + 1));
  write_deep(path, options, deep, linear("depth in mm", step * (least - 1), step));
}

}  // namespace

Planes make_planes(const Options& options) {
  const size_t count = static_cast<size_t>(options.view.width) * static_cast<size_t>(options.view.height);
  Planes planes;
  planes.pixels.resize(count);
  if (!options.raw_output.empty() || options.colormap == Colormap::kDiverging) planes.samples.resize(count);
  if (!options.depth_output.empty()) planes.depths.resize(count);
  return planes;
}

zox_render_picture picture_of(Planes& planes) {
  zox_render_picture picture;
  zox_render_picture_init(&picture);
  picture.pixels = planes.pixels.data();
  if (!planes.samples.empty()) picture.samples = planes.samples.data();
  if (!planes.depths.empty()) picture.depths = planes.depths.data();
  return picture;
}

output::Image image_of(const Planes& planes, const Options& options, const output::Palette& palette) {
  output::Image image;
  image.width = options.view.width;
  image.height = options.view.height;
  image.grey = planes.pixels.data();
  if (options.colormap != Colormap::kGray) image.palette = &palette;
  return image;
}

void write_samples(const std::string& path, const Planes& planes, const Options& options,
                   const zox_render_volume_info& info) {
  const Kind kind = output::kind_of(path, {Kind::kPng, Kind::kNrrd, Kind::kNpy});
  const double slope = info.sample_slope;
  const double intercept = info.sample_intercept;
  if (kind == Kind::kPng) {
    static_assert(ZOX_RENDER_NOTHING == -32768, "becomes 0");
    std::vector<uint16_t> deep;
    for (const int16_t sample : planes.samples) deep.push_back(static_cast<uint16_t>(sample + 32768));
    return write_deep(path, options, deep, linear("value", intercept - 32768 * slope, slope));
  }
  output::Numbers numbers = numbers_of(options);
  numbers.shorts = planes.samples.data();
  if (kind == Kind::kNpy) return output::write_file(path, output::encode_npy(numbers));
  output::write_file(path, output::encode_nrrd(numbers, {{"slope", number_text(slope)},
                                                         {"intercept", number_text(intercept)},
                                                         {"no sample", std::to_string(ZOX_RENDER_NOTHING)}}));
}

void write_depths(const std::string& path, const Planes& planes, const Options& options, double step) {
  const Kind kind = output::kind_of(path, {Kind::kPng, Kind::kNrrd, Kind::kNpy});
  if (kind == Kind::kPng) return write_deep_depths(path, planes, options, step);
  std::vector<float> millimetres;
  for (const int32_t depth : planes.depths)
    millimetres.push_back(depth == ZOX_RENDER_NO_DEPTH ? std::numeric_limits<float>::quiet_NaN()
                                                       : static_cast<float>(depth * step));
  output::Numbers numbers = numbers_of(options);
  numbers.floats = millimetres.data();
  output::write_file(path, kind == Kind::kNpy
                               ? output::encode_npy(numbers)
                               : output::encode_nrrd(numbers, {{"unit", "mm behind the middle"}}));
}

}  // namespace zox_mip
