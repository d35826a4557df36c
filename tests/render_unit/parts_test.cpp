// Parts of a volume, whose pictures make up the picture of the whole.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "effort.h"
#include "scene.h"

namespace zox_test {
namespace {

using Cuts = std::vector<int>;  // the first voxels of the parts along an axis, and the end

Cuts draw_cuts(Random& random, int size) {
  Cuts cuts = {0, size};
  for (int n = random.whole(0, 2); n > 0; --n) cuts.push_back(random.whole(0, size));
  std::sort(cuts.begin(), cuts.end());
  cuts.erase(std::unique(cuts.begin(), cuts.end()), cuts.end());
  return cuts;
}

// The array of a part, which refers to the whole's voxels: its own and one beyond them.
zox_render_array part_of(const Scene& scene, int64_t voxel_bytes, const int (&owned)[3],
                         const int (&end)[3]) {
  zox_render_array part = scene.array;
  const int64_t row = voxel_bytes * part.size[0];
  part.strides[0] = voxel_bytes;
  part.strides[1] = row;
  part.strides[2] = row * part.size[1];
  const std::byte* data = scene.voxels.data();
  for (int a = 0; a < 3; ++a) {
    part.whole_size[a] = scene.array.size[a];
    part.first[a] = part.owned_first[a] = owned[a];
    part.owned_size[a] = end[a] - owned[a];
    part.size[a] = std::min(part.owned_size[a] + 1, scene.array.size[a] - owned[a]);
    data += owned[a] * part.strides[a];
  }
  part.data = data;
  return part;
}

class PartsOfScene {
 public:
  explicit PartsOfScene(uint64_t seed) : scene_(seed, 30), random_(seed + 77) {
    if (scene_.view.reduction == ZOX_RENDER_MEAN) scene_.view.reduction = ZOX_RENDER_MINIMUM;
    scene_.view.window_width = 50;
  }

  void check() {
    SCOPED_TRACE(scene_.text);
    Handle whole;
    find_range();
    ASSERT_EQ(zox_render_volume_create(&scene_.array, &scene_.options, nullptr, &whole.volume),
              ZOX_RENDER_OK);
    const Picture expected = render_picture(whole.volume, scene_.view);
    into_ = expected;
    std::fill(into_.samples.begin(), into_.samples.end(), int16_t{ZOX_RENDER_NOTHING});
    std::fill(into_.depths.begin(), into_.depths.end(), ZOX_RENDER_NO_DEPTH);
    const Cuts cuts[3] = {draw_cuts(random_, scene_.array.size[0]), draw_cuts(random_, scene_.array.size[1]),
                          draw_cuts(random_, scene_.array.size[2])};
    for (size_t z = 0; z + 1 < cuts[2].size(); ++z)
      for (size_t y = 0; y + 1 < cuts[1].size(); ++y)
        for (size_t x = 0; x + 1 < cuts[0].size(); ++x)
          add_part({cuts[0][x], cuts[1][y], cuts[2][z]}, {cuts[0][x + 1], cuts[1][y + 1], cuts[2][z + 1]});
    EXPECT_EQ(into_.samples, expected.samples);
    EXPECT_EQ(into_.depths, expected.depths);
  }

 private:
  // The whole's range in stored voxels, from the values of a volume of its own.
  void find_range() {
    Handle handle;
    ASSERT_EQ(zox_render_volume_create(&scene_.array, &scene_.options, nullptr, &handle.volume),
              ZOX_RENDER_OK)
        << zox_render_last_error();
    zox_render_volume_info info;
    zox_render_volume_info_init(&info);
    zox_render_volume_get_info(handle.volume, &info);
    const double low = (info.lowest - scene_.array.intercept) / scene_.array.slope;
    const double high = (info.highest - scene_.array.intercept) / scene_.array.slope;
    scene_.array.lowest = std::min(low, high) - 0.5;
    scene_.array.highest = std::max(low, high) + 0.5;
    if (scene_.array.type < ZOX_RENDER_FLOAT32 || scene_.array.type == ZOX_RENDER_INT8) {
      scene_.array.lowest = std::floor(std::min(low, high) + 0.5);
      scene_.array.highest = std::floor(std::max(low, high) + 0.5);
    }
  }

  void add_part(const int (&owned)[3], const int (&end)[3]) {
    const int64_t count = int64_t{scene_.array.size[0]} * scene_.array.size[1] * scene_.array.size[2];
    const zox_render_array part =
        part_of(scene_, static_cast<int64_t>(scene_.voxels.size()) / count, owned, end);
    Handle handle;
    ASSERT_EQ(zox_render_volume_create(&part, &scene_.options, nullptr, &handle.volume), ZOX_RENDER_OK)
        << zox_render_last_error();
    const Picture picture = render_picture(handle.volume, scene_.view);
    zox_render_volume_info info;
    zox_render_volume_info_init(&info);
    zox_render_volume_get_info(handle.volume, &info);
    EXPECT_EQ(zox_render_merge(scene_.view.reduction, info.sample_slope, info.sample_intercept,
                               static_cast<int64_t>(into_.samples.size()), into_.samples.data(),
                               into_.depths.data(), picture.samples.data(), picture.depths.data()),
              ZOX_RENDER_OK);
  }

  Scene scene_;
  Random random_;
  Picture into_;
};

TEST(Parts, MakeUpTheWhole) {
  const Seeds wanted = seeds(3000, 300);
  for (uint64_t seed = wanted.first; seed < wanted.first + wanted.count && !HasFailure(); ++seed) {
    PartsOfScene parts(seed);
    parts.check();
  }
}

}  // namespace
}  // namespace zox_test
