// Volumes to render: arrays as callers have them, with the numbers in them known.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "plain_renderer.h"
#include "random.h"
#include "zox_render.h"

namespace zox_test {

struct TypeTraits {
  int type;
  const char* name;
  size_t bytes;
  double lowest, highest;  // of the values that the tests use
};
const TypeTraits& traits_of(int type);

// What random voxels look like.
enum class Content { kExtremes, kNoise, kSmooth, kSparse, kConstant };

struct Scene {
  zox_render_array array;      // refers to the vectors below
  std::vector<double> voxels;  // as stored by the caller, x fastest
  std::vector<std::byte> bytes;
  std::vector<const void*> slices;
  std::vector<double> positions;
};

// A packed array of these voxels.
std::unique_ptr<Scene> make_scene(int type, const std::array<int, 3>& size, std::vector<double> voxels);

// Lays the voxels out anew: rows and slices with gaps, axes in any order and direction, or by slices.
void scatter(Scene& scene, Random& random);

std::vector<double> random_voxels(Random& random, const std::array<int, 3>& size, const TypeTraits& type,
                                  Content content);

// Any three axes: spacings from 0.3 to 3 mm, turned, skewed and mirrored by chance.
void draw_axes(Scene& scene, Random& random);

// Strictly ascending, of every kind of gap that scans have.
void draw_positions(Scene& scene, Random& random);

// Everything about it by chance, up to `edge` voxels long.
std::unique_ptr<Scene> random_scene(Random& random, int type, int edge);

// A view of anything by chance, of up to `edge` pixels.
zox_render_view random_view(Random& random, int edge);

}  // namespace zox_test
