// One picture in memory and the files made of it.
#pragma once

#include <string>
#include <vector>

#include "options.h"
#include "picture_file.h"

namespace zox_mip {

struct Planes {
  std::vector<uint8_t> pixels;
  std::vector<int16_t> samples;  // empty where not wanted
  std::vector<int32_t> depths;   // empty where not wanted
};

// Planes for what the options ask for, and the library's record that leads to them.
Planes make_planes(const Options& options);
zox_render_picture picture_of(Planes& planes);

zox::output::Image image_of(const Planes& planes, const Options& options,
                            const zox::output::Palette& palette);

// The samples as they are stored, with the meaning of their numbers.
void write_samples(const std::string& path, const Planes& planes, const Options& options,
                   const zox_render_volume_info& info);

// Depths in millimetres behind the middle, of samples `step` millimetres apart.
void write_depths(const std::string& path, const Planes& planes, const Options& options, double step);

}  // namespace zox_mip
