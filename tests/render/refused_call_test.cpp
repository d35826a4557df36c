// Calls that make no sense, and what pitches mean.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "library.h"
#include "refused.h"

using namespace zox_test;

namespace {

TEST(Refused, NullPointers) {
  const auto scene = good_scene();
  const Volume volume = make_volume(*scene, ZOX_RENDER_BRICKS);
  zox_render_view view;
  zox_render_view_init(&view);
  zox_render_picture picture;
  zox_render_picture_init(&picture);
  zox_render_volume* made = nullptr;
  double value = 0, center = 0;
  uint64_t count = 0;
  const int32_t voxel[3] = {0, 0, 0};
  int16_t sample = 0;
  zox_render_pool* pool = nullptr;
  const int statuses[] = {zox_render_volume_create(nullptr, nullptr, nullptr, &made),
                          zox_render_volume_create(&scene->array, nullptr, nullptr, nullptr),
                          zox_render_volume_get_info(nullptr, nullptr),
                          zox_render_volume_get_info(volume.get(), nullptr),
                          zox_render_histogram(nullptr, 1, &count),
                          zox_render_histogram(volume.get(), 1, nullptr),
                          zox_render_histogram(volume.get(), 0, &count),
                          zox_render_histogram(volume.get(), 65537, &count),
                          zox_render_percentile(nullptr, 0.5, &value),
                          zox_render_percentile(volume.get(), 0.5, nullptr),
                          zox_render_percentile(volume.get(), -0.1, &value),
                          zox_render_percentile(volume.get(), 1.1, &value),
                          zox_render_percentile(volume.get(), kNaN, &value),
                          zox_render_default_window(nullptr, &center, &value),
                          zox_render_default_window(volume.get(), nullptr, &value),
                          zox_render_voxel(nullptr, voxel, &value),
                          zox_render_voxel(volume.get(), nullptr, &value),
                          zox_render_voxel(volume.get(), voxel, nullptr),
                          zox_render_view_by_name(nullptr, "left"),
                          zox_render_view_by_name(&view, nullptr),
                          zox_render_view_geometry(volume.get(), &view, nullptr),
                          zox_render_view_geometry(volume.get(), nullptr, nullptr),
                          zox_render_locate(nullptr, &view, 0, 0, 0, nullptr, nullptr),
                          zox_render(nullptr, &view, nullptr, &picture, nullptr),
                          zox_render(volume.get(), nullptr, nullptr, &picture, nullptr),
                          zox_render(volume.get(), &view, nullptr, nullptr, nullptr),
                          zox_render_window(1, 0, 0, 1, 1, nullptr, nullptr),
                          zox_render_window(1, 0, 0, -1, 1, &sample, nullptr),
                          zox_render_pool_create(1, nullptr),
                          zox_render_pool_create(-1, &pool),
                          zox_render_pool_create(1025, &pool)};
  for (size_t i = 0; i < std::size(statuses); ++i)
    EXPECT_EQ(statuses[i], ZOX_RENDER_BAD_ARGUMENT) << "call " << i;
  expect_sentence("the last one");
  zox_render_volume_destroy(nullptr);
  zox_render_pool_destroy(nullptr);
}

TEST(Refused, VoxelsOutside) {
  const auto scene = good_scene();
  const Volume volume = make_volume(*scene, ZOX_RENDER_STACK);
  double value = 0;
  for (const auto& at : std::vector<std::array<int32_t, 3>>{{-1, 0, 0}, {4, 0, 0}, {0, 5, 0}, {0, 0, 6}})
    EXPECT_EQ(zox_render_voxel(volume.get(), at.data(), &value), ZOX_RENDER_BAD_ARGUMENT);
}

TEST(Refused, PoolAndCallersThreadsAtOnce) {
  const auto scene = good_scene();
  const Volume volume = make_volume(*scene, ZOX_RENDER_STACK);
  const Pool pool = make_pool(2);
  zox_render_view view;
  zox_render_view_init(&view);
  zox_render_run run;
  zox_render_run_init(&run);
  run.pool = pool.get();
  run.parallel_for = [](void*, int, void (*)(void*, int), void*) {};
  EXPECT_EQ(render(volume, view, &run).status, ZOX_RENDER_BAD_ARGUMENT);
  expect_sentence("both");
}

TEST(Refused, DepthsOfAMeanAndPitchesThatAreTooShort) {
  const auto scene = good_scene();
  const Volume volume = make_volume(*scene, ZOX_RENDER_STACK);
  zox_render_view view;
  zox_render_view_init(&view);
  view.width = view.height = 16;
  std::vector<int32_t> depths(256);
  std::vector<uint8_t> pixels(256);
  zox_render_picture picture;
  zox_render_picture_init(&picture);
  picture.pixels = pixels.data();
  picture.pixels_pitch = 15;
  EXPECT_EQ(zox_render(volume.get(), &view, nullptr, &picture, nullptr), ZOX_RENDER_BAD_ARGUMENT);
  zox_render_picture_init(&picture);
  picture.depths = depths.data();
  view.reduction = ZOX_RENDER_MEAN;
  EXPECT_EQ(zox_render(volume.get(), &view, nullptr, &picture, nullptr), ZOX_RENDER_BAD_ARGUMENT);
}

TEST(Refused, MoreMemoryThanTheLimit) {
  const auto scene = make_scene(ZOX_RENDER_INT16, {64, 64, 64}, std::vector<double>(64 * 64 * 64, 1));
  zox_render_volume_options options = options_of(ZOX_RENDER_BRICKS);
  options.memory_limit = 1000;
  zox_render_volume* volume = nullptr;
  EXPECT_EQ(zox_render_volume_create(&scene->array, &options, nullptr, &volume), ZOX_RENDER_NO_MEMORY);
  const std::string text = zox_render_last_error();
  EXPECT_NE(text.find("1000"), std::string::npos) << text;
}

// A picture with a pitch: what lies between the rows stays.
TEST(Pitch, LeavesWhatIsBetweenRows) {
  const auto scene = good_scene();
  const Volume volume = make_volume(*scene, ZOX_RENDER_STACK);
  zox_render_view view;
  zox_render_view_init(&view);
  view.width = 13;
  view.height = 7;
  const Picture packed = render(volume, view);
  std::vector<uint8_t> pixels(7 * 20, 0x5A);
  std::vector<int16_t> samples(7 * 20, 0x5A5A);
  std::vector<int32_t> depths(7 * 20, 0x5A5A5A5A);
  zox_render_picture picture;
  zox_render_picture_init(&picture);
  picture.pixels = pixels.data(), picture.pixels_pitch = 20;
  picture.samples = samples.data(), picture.samples_pitch = 40;
  picture.depths = depths.data(), picture.depths_pitch = 80;
  ASSERT_EQ(zox_render(volume.get(), &view, nullptr, &picture, nullptr), ZOX_RENDER_OK);
  for (size_t row = 0; row < 7; ++row)
    for (size_t column = 0; column < 20; ++column) {
      const size_t at = row * 20 + column, from = row * 13 + column;
      EXPECT_EQ(pixels[at], column < 13 ? packed.pixels[from] : 0x5A);
      EXPECT_EQ(samples[at], column < 13 ? packed.samples[from] : 0x5A5A);
      EXPECT_EQ(depths[at], column < 13 ? packed.depths[from] : 0x5A5A5A5A);
    }
}

TEST(Texts, OfStatusesAreNeverNull) {
  for (int status = -1; status < 10; ++status) EXPECT_STRNE(zox_render_status_text(status), "");
  EXPECT_STRNE(zox_render_version(), "");
}

}  // namespace
