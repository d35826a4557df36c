// Windows, merging, views, and what is refused.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "scene.h"
#include "view/camera.h"

namespace zox_test {
namespace {

TEST(SineCosine, AreThoseOfTheLibraryAndExactAtRightAngles) {
  for (double degrees = -1000; degrees <= 1000; degrees += 0.37) {
    const render::SineCosine found = render::sine_cosine(degrees);
    EXPECT_NEAR(found.sine, std::sin(degrees * M_PI / 180), 1e-14);
    EXPECT_NEAR(found.cosine, std::cos(degrees * M_PI / 180), 1e-14);
  }
  EXPECT_EQ(render::sine_cosine(90).sine, 1);
  EXPECT_EQ(render::sine_cosine(90).cosine, 0);
  EXPECT_EQ(render::sine_cosine(-180).cosine, -1);
  EXPECT_EQ(render::sine_cosine(270).sine, -1);
}

TEST(Window, MapsValues) {
  const int16_t samples[] = {-32768, -5, 0, 1, 50, 99, 100, 101};
  uint8_t pixels[8];
  ASSERT_EQ(zox_render_window(1, 0, 50, 100, 8, samples, pixels), ZOX_RENDER_OK);
  const uint8_t expected[] = {0, 0, 0, 2, 127, 252, 255, 255};
  EXPECT_EQ(std::memcmp(pixels, expected, 8), 0);
  EXPECT_EQ(zox_render_window(1, 0, 50, 0, 8, samples, pixels), ZOX_RENDER_BAD_ARGUMENT);
  EXPECT_EQ(zox_render_window(1, 0, NAN, 10, 8, samples, pixels), ZOX_RENDER_BAD_ARGUMENT);
}

TEST(Merge, TakesTheWinnerAndOfEqualsTheNearest) {
  constexpr int16_t kNone = ZOX_RENDER_NOTHING;
  const int16_t other[] = {5, kNone, 7, 7, 7, -9, 9};
  const int32_t other_depths[] = {1, ZOX_RENDER_NO_DEPTH, 2, 3, 9, 1, 8};
  int16_t into[] = {kNone, 4, 6, 7, 7, 9, -9};
  int32_t depths[] = {ZOX_RENDER_NO_DEPTH, 6, 6, 6, 6, 6, 6};
  ASSERT_EQ(zox_render_merge(ZOX_RENDER_LARGEST_MAGNITUDE, 2, 0, 7, into, depths, other, other_depths),
            ZOX_RENDER_OK);
  const int16_t expected[] = {5, 4, 7, 7, 7, 9, 9};
  const int32_t expected_depths[] = {1, 6, 2, 3, 6, 6, 8};
  EXPECT_EQ(std::memcmp(into, expected, sizeof into), 0);
  EXPECT_EQ(std::memcmp(depths, expected_depths, sizeof depths), 0);
  EXPECT_EQ(zox_render_merge(ZOX_RENDER_MEAN, 1, 0, 7, into, depths, other, other_depths),
            ZOX_RENDER_BAD_ARGUMENT);
  EXPECT_EQ(zox_render_merge(ZOX_RENDER_MAXIMUM, 1, 0, 7, into, nullptr, other, other_depths),
            ZOX_RENDER_BAD_ARGUMENT);
}

TEST(Progress, ComesFromTheCallingThreadAndCancels) {
  Scene scene(1);
  scene.view.zoom = 1;
  struct Told {
    int calls = 0;
    double last = 0;
    int limit = 1 << 30;
  } told;
  zox_render_run run;
  zox_render_run_init(&run);
  run.progress_user = &told;
  run.progress = [](void* user, double share) {
    Told& into = *static_cast<Told*>(user);
    EXPECT_GE(share, into.last);
    into.last = share;
    return ++into.calls >= into.limit ? 1 : 0;
  };
  Handle handle;
  ASSERT_EQ(zox_render_volume_create(&scene.array, nullptr, &run, &handle.volume), ZOX_RENDER_OK);
  EXPECT_EQ(told.last, 1);
  told = {0, 0, 1};
  zox_render_volume* none = nullptr;
  EXPECT_EQ(zox_render_volume_create(&scene.array, nullptr, &run, &none), ZOX_RENDER_CANCELLED);
  EXPECT_EQ(none, nullptr);
  EXPECT_STRNE(zox_render_last_error(), "");
}

TEST(Arguments, AreChecked) {
  Scene scene(2);
  zox_render_volume* volume = nullptr;
  const auto refused = [&](auto change) {
    zox_render_array array = scene.array;
    change(array);
    const int status = zox_render_volume_create(&array, nullptr, nullptr, &volume);
    EXPECT_EQ(volume, nullptr);
    return status == ZOX_RENDER_BAD_ARGUMENT && zox_render_last_error()[0];
  };
  EXPECT_TRUE(refused([](zox_render_array& a) { a.record_size = 0; }));
  EXPECT_TRUE(refused([](zox_render_array& a) { a.type = 0; }));
  EXPECT_TRUE(refused([](zox_render_array& a) { a.size[1] = 0; }));
  EXPECT_TRUE(refused([](zox_render_array& a) { a.size[2] = 2049; }));
  EXPECT_TRUE(refused([](zox_render_array& a) { a.data = nullptr; }));
  EXPECT_TRUE(refused([](zox_render_array& a) { a.slope = 0; }));
  EXPECT_TRUE(refused([](zox_render_array& a) { a.slope = NAN; }));
  EXPECT_TRUE(refused([](zox_render_array& a) { std::memcpy(a.axes[1], a.axes[0], sizeof a.axes[0]); }));
  EXPECT_TRUE(refused([](zox_render_array& a) { a.axes[1][1] = INFINITY; }));
  EXPECT_TRUE(refused([](zox_render_array& a) { a.owned_size[0] = 1; }));
  EXPECT_TRUE(refused([](zox_render_array& a) { a.lowest = 2, a.highest = 1; }));
  EXPECT_TRUE(refused([](zox_render_array& a) { a.lowest = a.highest = 1e9; }));
}

TEST(Memory, IsRefusedWithTheBytesWantedAndAvailable) {
  Scene scene(2);
  scene.array.slope = 1;
  zox_render_volume_options options;
  zox_render_volume_options_init(&options);
  options.layout = ZOX_RENDER_BRICKS;
  options.memory_limit = 1000;
  zox_render_volume* volume = nullptr;
  EXPECT_EQ(zox_render_volume_create(&scene.array, &options, nullptr, &volume), ZOX_RENDER_NO_MEMORY);
  EXPECT_NE(std::strstr(zox_render_last_error(), " 1000 "), nullptr) << zox_render_last_error();
}

}  // namespace
}  // namespace zox_test
