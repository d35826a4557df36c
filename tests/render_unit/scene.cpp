#include "scene.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace zox_test {
namespace {

size_t bytes_of(int type) {
  switch (type) {
    case ZOX_RENDER_UINT8:
    case ZOX_RENDER_INT8:
      return 1;
    case ZOX_RENDER_INT16:
    case ZOX_RENDER_UINT16:
      return 2;
    case ZOX_RENDER_FLOAT64:
      return 8;
    default:
      return 4;
  }
}

template <class Voxel>
void put(std::vector<std::byte>& voxels, size_t i, double value) {
  const Voxel voxel = static_cast<Voxel>(value);
  std::memcpy(voxels.data() + i * sizeof voxel, &voxel, sizeof voxel);
}

void put(int type, std::vector<std::byte>& voxels, size_t i, double value) {
  switch (type) {
    case ZOX_RENDER_UINT8:
      return put<uint8_t>(voxels, i, value);
    case ZOX_RENDER_INT8:
      return put<int8_t>(voxels, i, value - 128);
    case ZOX_RENDER_INT16:
      return put<int16_t>(voxels, i, value);
    case ZOX_RENDER_UINT16:
      return put<uint16_t>(voxels, i, std::abs(value));
    case ZOX_RENDER_INT32:
      return put<int32_t>(voxels, i, value);
    case ZOX_RENDER_UINT32:
      return put<uint32_t>(voxels, i, std::abs(value));
    case ZOX_RENDER_FLOAT32:
      return put<float>(voxels, i, value);
    default:
      return put<double>(voxels, i, value);
  }
}

double highest_of(int type, Random& random) {
  if (type == ZOX_RENDER_UINT8 || type == ZOX_RENDER_INT8) return random.pick({1.0, 100.0, 254.0, 255.0});
  if (type == ZOX_RENDER_INT16) return random.pick({1.0, 4000.0, 32767.0});
  if (type == ZOX_RENDER_UINT16) return random.pick({1.0, 4000.0, 40000.0, 65535.0});
  return random.pick({1.0, 3000.0, 60000.0, 5000000.0});
}

}  // namespace

Scene::Scene(uint64_t seed, int largest_size) {
  Random random(seed);
  zox_render_array_init(&array);
  zox_render_volume_options_init(&options);
  zox_render_view_init(&view);
  for (int32_t& extent : array.size) extent = random.whole(1, largest_size);
  array.type = random.whole(ZOX_RENDER_UINT8, ZOX_RENDER_FLOAT64);
  options.layout = random.whole(ZOX_RENDER_AUTO, ZOX_RENDER_STACK);
  options.precision = random.whole(ZOX_RENDER_PRECISION_AUTO, ZOX_RENDER_PRECISION_FINE);
  options.copy = random.chance(0.3);
  draw_voxels(random);
  draw_frame(random);
  draw_view(random);
  text = "seed " + std::to_string(seed) + ", " + std::to_string(array.size[0]) + " x " +
         std::to_string(array.size[1]) + " x " + std::to_string(array.size[2]) + ", type " +
         std::to_string(array.type) + ", layout " + std::to_string(options.layout) + ", projection " +
         std::to_string(view.projection) + ", interpolation " + std::to_string(view.interpolation) +
         ", reduction " + std::to_string(view.reduction) + ", uneven " + std::to_string(!positions.empty()) +
         ", step " + std::to_string(view.step);
}

void Scene::draw_voxels(Random& random) {
  const size_t count = static_cast<size_t>(array.size[0]) * static_cast<size_t>(array.size[1]) *
                       static_cast<size_t>(array.size[2]);
  const double highest = highest_of(array.type, random), sparse = random.pick({0.02, 0.5, 1.0});
  const bool extremes = random.chance(0.3), below = array.type == ZOX_RENDER_INT16 && random.chance(0.5);
  voxels.resize(count * bytes_of(array.type));
  for (size_t i = 0; i < count; ++i) {
    double value = extremes ? (random.chance(0.5) ? highest : 0) : random.real(0, highest + 0.999);
    if (!random.chance(sparse)) value = 0;
    put(array.type, voxels, i, below ? value - highest / 2 : value);
  }
  array.data = voxels.data();
  array.slope = random.pick({1.0, 1.0, 0.25, -2.0});
  array.intercept = random.pick({0.0, -1024.0});
}

void Scene::draw_frame(Random& random) {
  for (auto& axis : array.axes)
    for (double& number : axis) number = random.chance(0.5) ? 0 : random.real(-0.3, 0.3);
  for (int a = 0; a < 3; ++a) array.axes[a][a] = random.pick({1.0, 1.0, -0.7, 3.0});
  for (double& number : array.origin) number = random.real(-100, 100);
  if (!random.chance(0.3)) return;
  double at = random.real(-5, 5);
  for (int s = 0; s < array.size[2]; ++s) {
    positions.push_back(at);
    at += s % 7 == 3 ? 4.5 : s < 15 ? 1.25 : 2;
  }
  array.positions = positions.data();
}

void Scene::draw_view(Random& random) {
  view.width = random.whole(1, 40);
  view.height = random.whole(1, 40);
  view.azimuth = random.chance(0.3) ? 90 * random.whole(-4, 4) : random.real(-360, 360);
  view.elevation = random.chance(0.3) ? 90 * random.whole(-1, 1) : random.real(-90, 90);
  view.roll = random.chance(0.5) ? 0 : random.real(-180, 180);
  view.projection = random.whole(0, 1);
  view.interpolation = random.whole(0, 1);
  view.reduction = random.whole(0, 3);
  view.zoom = random.pick({1.0, 1.0, 0.3, 4.0});
  view.step = random.pick({1.0, 0.37, 5.0, 0.0625});
  view.field_of_view = random.pick({30.0, 1.0, 110.0});
  if (random.chance(0.3)) {
    view.slab_near = random.real(-20, 5);
    view.slab_far = view.slab_near + random.pick({0.0, 3.0, 20.0});
  }
  if (random.chance(0.3)) {
    view.window_width = random.real(0.5, 3000);
    view.window_center = random.real(-1000, 1000);
  }
}

Picture render_picture(const zox_render_volume* volume, const zox_render_view& view,
                       const zox_render_run* run, zox_render_stats* stats) {
  const size_t count = static_cast<size_t>(view.width) * static_cast<size_t>(view.height);
  Picture picture{std::vector<uint8_t>(count, 99), std::vector<int16_t>(count, 99),
                  std::vector<int32_t>(count, 99)};
  zox_render_picture record;
  zox_render_picture_init(&record);
  record.pixels = picture.pixels.data();
  record.samples = picture.samples.data();
  record.depths = view.reduction == ZOX_RENDER_MEAN ? nullptr : picture.depths.data();
  const int status = zox_render(volume, &view, run, &record, stats);
  EXPECT_TRUE(status == ZOX_RENDER_OK || status == ZOX_RENDER_EMPTY) << zox_render_last_error();
  return picture;
}

}  // namespace zox_test
