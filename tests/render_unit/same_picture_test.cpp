// One picture, however it is computed: with and without skipping, with other threads, in other planes.
#include <gtest/gtest.h>

#include <thread>

#include "effort.h"
#include "scene.h"

namespace zox_test {
namespace {

// The caller's threads, as a program with a pool of its own hands them over.
void on_three_threads(void*, int count, void (*task)(void*, int), void* context) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t)
    threads.emplace_back([=] {
      for (int i = t; i < count; i += 3) task(context, i);
    });
  for (std::thread& thread : threads) thread.join();
}

TEST(SamePicture, WithAndWithoutSkippingOnAnyThreads) {
  zox_render_pool* pool = nullptr;
  ASSERT_EQ(zox_render_pool_create(4, &pool), ZOX_RENDER_OK);
  zox_render_run pooled, given;
  zox_render_run_init(&pooled);
  zox_render_run_init(&given);
  pooled.pool = pool;
  given.parallel_for = on_three_threads;
  const Seeds wanted = seeds(1000, 300);
  for (uint64_t seed = wanted.first; seed < wanted.first + wanted.count && !HasFailure(); ++seed) {
    Scene scene(seed);
    SCOPED_TRACE(scene.text);
    Handle handle;
    ASSERT_EQ(zox_render_volume_create(&scene.array, &scene.options, &pooled, &handle.volume), ZOX_RENDER_OK)
        << zox_render_last_error();
    const Picture skipped = render_picture(handle.volume, scene.view);
    scene.view.skip = 0;
    EXPECT_EQ(render_picture(handle.volume, scene.view), skipped);
    EXPECT_EQ(render_picture(handle.volume, scene.view, &pooled), skipped);
    scene.view.skip = 1;
    EXPECT_EQ(render_picture(handle.volume, scene.view, &pooled), skipped);
    EXPECT_EQ(render_picture(handle.volume, scene.view, &given), skipped);
  }
  zox_render_pool_destroy(pool);
}

TEST(SamePicture, OfPixelsAlone) {
  const Seeds wanted = seeds(2000, 300);
  for (uint64_t seed = wanted.first; seed < wanted.first + wanted.count && !HasFailure(); ++seed) {
    Scene scene(seed);
    SCOPED_TRACE(scene.text);
    Handle handle;
    ASSERT_EQ(zox_render_volume_create(&scene.array, &scene.options, nullptr, &handle.volume), ZOX_RENDER_OK);
    const Picture whole = render_picture(handle.volume, scene.view);
    std::vector<uint8_t> pixels(whole.pixels.size());
    zox_render_picture record;
    zox_render_picture_init(&record);
    record.pixels = pixels.data();
    zox_render(handle.volume, &scene.view, nullptr, &record, nullptr);
    EXPECT_EQ(pixels, whole.pixels);
  }
}

}  // namespace
}  // namespace zox_test
