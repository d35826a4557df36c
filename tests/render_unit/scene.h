// Random volumes, views and pictures of them.
#pragma once

#include <zox_render.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "random.h"

namespace zox_test {

struct Handle {
  zox_render_volume* volume = nullptr;
  Handle() = default;
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() { zox_render_volume_destroy(volume); }
};

struct Picture {
  std::vector<uint8_t> pixels;
  std::vector<int16_t> samples;
  std::vector<int32_t> depths;
  bool operator==(const Picture&) const = default;
};

// An array with the memory that it lies in.
struct Scene {
  zox_render_array array;
  zox_render_volume_options options;
  zox_render_view view;
  std::vector<std::byte> voxels;
  std::vector<double> positions;
  std::string text;  // what was drawn

  explicit Scene(uint64_t seed, int largest_size = 40);
  Scene(const Scene&) = delete;
  Scene& operator=(const Scene&) = delete;

 private:
  void draw_voxels(Random& random);
  void draw_frame(Random& random);
  void draw_view(Random& random);
};

// Draws a view; with depths where the reduction has them. A view without samples gives a picture of nothing.
Picture render_picture(const zox_render_volume* volume, const zox_render_view& view,
                       const zox_render_run* run = nullptr, zox_render_stats* stats = nullptr);

}  // namespace zox_test
