#include "array_scene.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace zox_test {
namespace {

const TypeTraits kTypes[] = {
    {ZOX_RENDER_UINT8, "uint8", 1, 0, 255},
    {ZOX_RENDER_INT16, "int16", 2, -32768, 32767},
    {ZOX_RENDER_UINT16, "uint16", 2, 0, 65535},
    {ZOX_RENDER_INT32, "int32", 4, -2147483648.0, 2147483647.0},
    {ZOX_RENDER_UINT32, "uint32", 4, 0, 4294967295.0},
    {ZOX_RENDER_FLOAT32, "float32", 4, -1e6, 3e6},
    {ZOX_RENDER_INT8, "int8", 1, -128, 127},
    {ZOX_RENDER_FLOAT64, "float64", 8, -1e-3, 7e-3},
};

template <class T>
void put(std::byte* at, double value) {
  const T stored = static_cast<T>(value);
  std::memcpy(at, &stored, sizeof stored);
}

void put(int type, std::byte* at, double value) {
  switch (type) {
    case ZOX_RENDER_UINT8:
      return put<uint8_t>(at, value);
    case ZOX_RENDER_INT16:
      return put<int16_t>(at, value);
    case ZOX_RENDER_UINT16:
      return put<uint16_t>(at, value);
    case ZOX_RENDER_INT32:
      return put<int32_t>(at, value);
    case ZOX_RENDER_UINT32:
      return put<uint32_t>(at, value);
    case ZOX_RENDER_FLOAT32:
      return put<float>(at, value);
    case ZOX_RENDER_INT8:
      return put<int8_t>(at, value);
    default:
      return put<double>(at, value);
  }
}

// Writes all voxels at base + x * strides[0] + ...
void fill(const Scene& scene, std::byte* base, const int64_t strides[3]) {
  const int32_t* size = scene.array.size;
  size_t next = 0;
  for (int64_t z = 0; z < size[2]; ++z)
    for (int64_t y = 0; y < size[1]; ++y)
      for (int64_t x = 0; x < size[0]; ++x)
        put(scene.array.type, base + x * strides[0] + y * strides[1] + z * strides[2], scene.voxels[next++]);
}

Vec random_direction(Random& random) {
  const Vec v = {random.real(-1, 1), random.real(-1, 1), random.real(-1, 1)};
  return length(v) < 0.1 ? Vec{0, 0.6, 0.8} : unit(v);
}

}  // namespace

const TypeTraits& traits_of(int type) {
  for (const TypeTraits& traits : kTypes)
    if (traits.type == type) return traits;
  throw std::logic_error("no such type");
}

std::unique_ptr<Scene> make_scene(int type, const std::array<int, 3>& size, std::vector<double> voxels) {
  auto scene = std::make_unique<Scene>();
  zox_render_array_init(&scene->array);
  scene->array.type = type;
  std::copy(size.begin(), size.end(), scene->array.size);
  scene->voxels = std::move(voxels);
  const int64_t bytes = static_cast<int64_t>(traits_of(type).bytes);
  scene->bytes.resize(scene->voxels.size() * static_cast<size_t>(bytes));
  // What was written is what is there: a float may not hold the double exactly.
  if (type == ZOX_RENDER_FLOAT32)
    for (double& voxel : scene->voxels) voxel = static_cast<float>(voxel);
  const int64_t strides[3] = {bytes, bytes * size[0], bytes * size[0] * size[1]};
  fill(*scene, scene->bytes.data(), strides);
  scene->array.data = scene->bytes.data();
  return scene;
}

void scatter(Scene& scene, Random& random) {
  const int64_t bytes = static_cast<int64_t>(traits_of(scene.array.type).bytes);
  int order[3] = {0, 1, 2};
  for (int a = 0; a < 2; ++a) std::swap(order[a], order[random.whole(a, 2)]);
  int64_t strides[3], stride = bytes * random.pick({1, 1, 2, 3});
  for (const int axis : order) {
    strides[axis] = stride;
    stride = stride * scene.array.size[axis] + bytes * random.pick({0, 0, 1, 5});
  }
  scene.bytes.assign(static_cast<size_t>(stride), std::byte{0xAB});
  int64_t base = 0;
  for (int a = 0; a < 3; ++a)
    if (random.chance(0.3)) {
      base += strides[a] * (scene.array.size[a] - 1);
      strides[a] = -strides[a];
    }
  fill(scene, scene.bytes.data() + base, strides);
  std::copy(strides, strides + 3, scene.array.strides);
  scene.array.data = scene.bytes.data() + base;
  if (!random.chance(0.4)) return;
  scene.slices.clear();
  for (int64_t z = 0; z < scene.array.size[2]; ++z)
    scene.slices.push_back(scene.bytes.data() + base + z * strides[2]);
  scene.array.slices = scene.slices.data();
  scene.array.data = nullptr;
  scene.array.strides[2] = 0;
}

std::vector<double> random_voxels(Random& random, const std::array<int, 3>& size, const TypeTraits& type,
                                  Content content) {
  std::vector<double> voxels;
  const Vec wave = {random.real(0.05, 0.6), random.real(0.05, 0.6), random.real(0.05, 0.6)};
  const double range = type.highest - type.lowest;
  const bool whole = type.type != ZOX_RENDER_FLOAT32 && type.type != ZOX_RENDER_FLOAT64;
  const double constant = random.pick({0.0, 1.0, 0.25});
  for (int z = 0; z < size[2]; ++z)
    for (int y = 0; y < size[1]; ++y)
      for (int x = 0; x < size[0]; ++x) {
        double share = constant;
        if (content == Content::kExtremes) share = random.pick({0.0, 1.0});
        if (content == Content::kNoise) share = random.real(0, 1);
        if (content == Content::kSmooth)
          share = 0.5 + 0.5 * std::sin(wave[0] * x) * std::sin(wave[1] * y) * std::cos(wave[2] * z);
        if (content == Content::kSparse) share = random.chance(0.02) ? random.real(0, 1) : 0;
        const double value = type.lowest + share * range;
        voxels.push_back(whole ? std::floor(value) : value);
      }
  return voxels;
}

void draw_axes(Scene& scene, Random& random) {
  const Vec x = random_direction(random);
  const Vec z = unit(cross(x, random_direction(random)));
  Vec axes[3] = {x, cross(z, x), z};
  if (random.chance(0.3)) axes[2] = unit(axes[2] + axes[1] * random.real(-0.5, 0.5));  // a tilted gantry
  if (random.chance(0.3)) axes[0] = axes[0] * -1;                                      // left-handed
  if (random.chance(0.3)) axes[0] = {1, 0, 0}, axes[1] = {0, -1, 0}, axes[2] = {0, 0, 1};
  for (int a = 0; a < 3; ++a) {
    axes[a] = axes[a] * random.pick({1.0, 0.3, 0.957, 1.5, 3.0});
    std::copy(axes[a].begin(), axes[a].end(), scene.array.axes[a]);
    scene.array.origin[a] = random.pick({0.0, -90.5, 1234.25});
  }
}

void draw_positions(Scene& scene, Random& random) {
  const double usual = random.pick({1.0, 1.25, 0.7, 3.0});
  double at = random.pick({0.0, -50.0, 7.5}), gap = usual;
  scene.positions.clear();
  for (int z = 0; z < scene.array.size[2]; ++z) {
    scene.positions.push_back(at);
    if (random.chance(0.15)) gap = random.pick({usual, 2 * usual, 0.5 * usual, 5 * usual, 1.01 * usual});
    at += gap;
    if (random.chance(0.1)) gap = usual;
  }
  scene.array.positions = scene.positions.data();
}

std::unique_ptr<Scene> random_scene(Random& random, int type, int edge) {
  const std::array<int, 3> size = {random.whole(2, edge), random.whole(2, edge), random.whole(2, edge)};
  const Content content = random.pick({Content::kExtremes, Content::kExtremes, Content::kNoise,
                                       Content::kSmooth, Content::kSparse, Content::kConstant});
  auto scene = make_scene(type, size, random_voxels(random, size, traits_of(type), content));
  if (random.chance(0.5)) scatter(*scene, random);
  draw_axes(*scene, random);
  if (random.chance(0.3)) scene->array.slope = 0.25, scene->array.intercept = -1024;
  return scene;
}

zox_render_view random_view(Random& random, int edge) {
  zox_render_view view;
  zox_render_view_init(&view);
  view.width = random.whole(1, edge);
  view.height = random.whole(1, edge);
  view.azimuth = random.pick({0.0, 90.0, 180.0, random.real(-360, 360), random.real(-360, 360)});
  view.elevation = random.pick({0.0, 90.0, -90.0, random.real(-90, 90), random.real(-90, 90)});
  if (random.chance(0.3)) view.roll = random.real(-180, 180);
  view.projection = random.pick({ZOX_RENDER_PERSPECTIVE, ZOX_RENDER_ORTHOGRAPHIC});
  view.interpolation = random.pick({ZOX_RENDER_TRILINEAR, ZOX_RENDER_NEAREST});
  view.step = random.pick({1.0, 1.0, 0.5, 0.37, 2.0});
  if (random.chance(0.3)) view.zoom = random.real(0.5, 4);
  if (random.chance(0.2)) view.field_of_view = random.real(5, 100);
  return view;
}

}  // namespace zox_test
