// The library's handles and outputs, owned, and the plain renderer beside them.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "array_scene.h"
#include "plain_renderer.h"
#include "zox_render.h"

namespace zox_test {

struct DestroyVolume {
  void operator()(zox_render_volume* volume) const { zox_render_volume_destroy(volume); }
};
using Volume = std::unique_ptr<zox_render_volume, DestroyVolume>;

struct DestroyPool {
  void operator()(zox_render_pool* pool) const { zox_render_pool_destroy(pool); }
};
using Pool = std::unique_ptr<zox_render_pool, DestroyPool>;

zox_render_volume_options options_of(int layout, int precision = ZOX_RENDER_PRECISION_AUTO);

// Null, and a failure of the test, when the library refuses.
Volume make_volume(const Scene& scene, const zox_render_volume_options& options);
Volume make_volume(const Scene& scene, int layout, int precision = ZOX_RENDER_PRECISION_AUTO);
Pool make_pool(int threads);
zox_render_volume_info info_of(const Volume& volume);
zox_render_geometry geometry_of(const Volume& volume, const zox_render_view& view);

// Every plane of a picture.
struct Picture {
  int status = ZOX_RENDER_OK;
  std::vector<uint8_t> pixels;
  std::vector<int16_t> samples;
  std::vector<int32_t> depths;
  zox_render_stats stats{};
};

// "" or where two pictures differ first.
std::string difference(const Picture& one, const Picture& other);

// The planes are prefilled, so that a pixel left out is seen; MEAN has no depths.
Picture render(const Volume& volume, const zox_render_view& view, const zox_render_run* run = nullptr);

// What the library keeps of the scene, found voxel by voxel: each within half a unit of the caller's.
PlainVolume plain_volume(const Scene& scene, const Volume& volume);

// How far samples of this volume may stray: 2^-19 of a voxel for a start and half of 2^-20 for a step. In
// uneven stacks stretches of a hundred samples or so step on a grid of their own: 2^-13, and more where
// slices stand closer.
Play play_of(const Scene& scene, const zox_render_volume_info& info, const zox_render_view& view);

// Renders and compares every pixel with the plain renderer. `pixels` counts those that are not nothing.
void compare_with_plain(const Scene& scene, const Volume& volume, const zox_render_view& view,
                        int64_t* pixels = nullptr);

}  // namespace zox_test
