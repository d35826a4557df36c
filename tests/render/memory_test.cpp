// Every request for memory fails in turn, alone and with all that follow: a status, nothing kept,
// nothing broken.
#include <gtest/gtest.h>

#include <string>

#include "failing_memory.h"
#include "library.h"

using namespace zox_test;

namespace {

constexpr size_t kAll = static_cast<size_t>(-1) / 2;
constexpr size_t kMostRequests = 4000;

// Calls `body` until no request fails any more. It returns its status and gives everything back.
template <class Body>
void fail_every_request(Body body) {
  for (const size_t count : {size_t{1}, kAll}) {
    size_t failed = 0;
    for (size_t number = 1;; ++number) {
      SCOPED_TRACE("request " + std::to_string(number) + (count == 1 ? " fails" : " and all others fail"));
      // After enough single steps the rest is tried in strides: requests repeat themselves by then.
      if (number > 60) number += number / 8;
      fail_memory(number, count);
      const int status = body();
      const MemoryCount memory = count_memory();
      EXPECT_EQ(memory.kept, 0u) << "blocks were not given back";
      ASSERT_LT(memory.requests, kMostRequests);
      if (memory.requests < number) {
        EXPECT_EQ(status, ZOX_RENDER_OK);
        break;
      }
      ++failed;
      EXPECT_TRUE(status == ZOX_RENDER_NO_MEMORY || (count == 1 && status == ZOX_RENDER_OK)) << status;
      if (testing::Test::HasFailure()) return;
    }
    EXPECT_GT(failed, 0u);
  }
}

std::unique_ptr<Scene> scene_of(int type) {
  Random random(3);
  const std::array<int, 3> size = {40, 30, 20};
  auto scene = make_scene(type, size, random_voxels(random, size, traits_of(type), Content::kNoise));
  scene->positions = {0, 1, 2, 3, 4, 6, 8, 10, 12, 14, 16, 20, 24, 28, 32, 36, 37, 38, 39, 39.5};
  return scene;
}

struct Planes {
  zox_render_picture picture;
  std::vector<uint8_t> pixels = std::vector<uint8_t>(64 * 64);
  std::vector<int16_t> samples = std::vector<int16_t>(64 * 64);
  std::vector<int32_t> depths = std::vector<int32_t>(64 * 64);
  Planes() {
    zox_render_picture_init(&picture);
    picture.pixels = pixels.data();
    picture.samples = samples.data();
    picture.depths = depths.data();
  }
};

zox_render_view small_view() {
  zox_render_view view;
  zox_render_view_init(&view);
  view.width = view.height = 64;
  view.azimuth = 20;
  return view;
}

class Memory : public testing::TestWithParam<int> {
 protected:
  // What is made once and kept: the text of the last error, a thread's own things.
  void SetUp() override { zox_render_volume_create(nullptr, nullptr, nullptr, nullptr); }
};
INSTANTIATE_TEST_SUITE_P(, Memory, testing::Values(ZOX_RENDER_BRICKS, ZOX_RENDER_STACK),
                         [](const auto& info) {
                           return info.param == ZOX_RENDER_BRICKS ? "bricks" : "stack";
                         });

TEST_P(Memory, FailsWhileAVolumeIsMade) {
  for (const int type : {ZOX_RENDER_UINT8, ZOX_RENDER_INT16, ZOX_RENDER_FLOAT32})
    for (const bool uneven : {false, true}) {
      const auto scene = scene_of(type);
      if (uneven) scene->array.positions = scene->positions.data();
      const zox_render_volume_options options = options_of(GetParam());
      fail_every_request([&] {
        zox_render_volume* volume = nullptr;
        const int status = zox_render_volume_create(&scene->array, &options, nullptr, &volume);
        if (status == ZOX_RENDER_OK) zox_render_volume_destroy(volume);
        return status;
      });
    }
}

TEST_P(Memory, FailsWhileAPictureIsMade) {
  const auto scene = scene_of(ZOX_RENDER_INT16);
  for (const bool uneven : {false, true})
    for (const int projection : {ZOX_RENDER_PERSPECTIVE, ZOX_RENDER_ORTHOGRAPHIC}) {
      if (uneven) scene->array.positions = scene->positions.data();
      const Volume volume = make_volume(*scene, GetParam());
      zox_render_view view = small_view();
      view.projection = projection;
      Planes planes;
      const Picture right = render(volume, view);
      fail_every_request([&] { return zox_render(volume.get(), &view, nullptr, &planes.picture, nullptr); });
      EXPECT_EQ(planes.samples, right.samples);
      EXPECT_EQ(planes.depths, right.depths);
    }
}

TEST_P(Memory, FailsInAPool) {
  const auto scene = scene_of(ZOX_RENDER_UINT8);
  const zox_render_volume_options options = options_of(GetParam());
  const zox_render_view view = small_view();
  const Picture right = render(make_volume(*scene, GetParam()), view);
  const Pool pool = make_pool(3);
  zox_render_run run;
  zox_render_run_init(&run);
  run.pool = pool.get();
  // Warm: what the threads keep for good is theirs by then.
  EXPECT_EQ(difference(render(make_volume(*scene, GetParam()), view, &run), right), "");
  Planes planes;
  const auto kept_after_failing = [&](size_t number) {
    fail_memory(number, number % 2 == 0 ? 1 : kAll);
    zox_render_volume* volume = nullptr;
    int status = zox_render_volume_create(&scene->array, &options, &run, &volume);
    if (status == ZOX_RENDER_OK) {
      status = zox_render(volume, &view, &run, &planes.picture, nullptr);
      zox_render_volume_destroy(volume);
    }
    const size_t kept = count_memory().kept;
    EXPECT_TRUE(status == ZOX_RENDER_NO_MEMORY || status == ZOX_RENDER_OK) << "request " << number;
    if (status == ZOX_RENDER_OK) {
      EXPECT_EQ(planes.samples, right.samples) << "request " << number;
    }
    return kept;
  };
  for (size_t number = 1; number < 120; ++number) {
    // What a thread makes once and keeps for good, such as for its first exception, is no leak.
    if (kept_after_failing(number) != 0) {
      EXPECT_EQ(kept_after_failing(number), 0u) << "request " << number;
    }
    if (HasFailure()) return;
  }
}

TEST(MemoryOfPools, FailsWhileOneIsMade) {
  // The C library keeps the stacks of threads that ended: from here on they are there.
  for (int i = 0; i < 3; ++i) make_pool(3);
  fail_every_request([] {
    zox_render_pool* pool = nullptr;
    const int status = zox_render_pool_create(3, &pool);
    if (status == ZOX_RENDER_OK) zox_render_pool_destroy(pool);
    return status == ZOX_RENDER_FAILED ? ZOX_RENDER_NO_MEMORY : status;  // a thread not started
  });
}

}  // namespace
