// One picture, however it is computed: the same bytes for every number of threads, with and without
// skipping, on the caller's threads, again and again.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "effort.h"
#include "library.h"

using namespace zox_test;

namespace {

// The caller's threads: every task on a thread of its own or all on this one, in odd orders.
void in_threads(void*, int count, void (*task)(void* context, int i), void* context) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t)
    threads.emplace_back([=] {
      for (int i = count - 1 - t; i >= 0; i -= 3) task(context, i);
    });
  for (std::thread& thread : threads) thread.join();
}
void backwards(void*, int count, void (*task)(void* context, int i), void* context) {
  for (int i = count - 1; i >= 0; --i) task(context, i);
}

struct Drawn {
  std::unique_ptr<Scene> scene;
  zox_render_view view;
  int layout;
};

Drawn draw(uint64_t seed) {
  Random random(seed);
  Drawn drawn;
  drawn.scene =
      random_scene(random, random.pick({ZOX_RENDER_UINT8, ZOX_RENDER_INT16, ZOX_RENDER_FLOAT32}), 40);
  if (random.chance(0.25)) draw_positions(*drawn.scene, random);
  drawn.view = random_view(random, 70);
  drawn.view.reduction = random.pick({ZOX_RENDER_MAXIMUM, ZOX_RENDER_MAXIMUM, ZOX_RENDER_MINIMUM,
                                      ZOX_RENDER_MEAN, ZOX_RENDER_LARGEST_MAGNITUDE});
  drawn.layout = random.pick({ZOX_RENDER_BRICKS, ZOX_RENDER_STACK});
  return drawn;
}

void for_seeds(int count, const std::function<void(const Drawn&)>& body) {
  const Seeds seeds = zox_test::seeds(1, count);
  for (uint64_t seed = seeds.first; seed < seeds.first + seeds.count; ++seed) {
    SCOPED_TRACE("ZOX_TEST_SEED=" + std::to_string(seed));
    body(draw(seed));
    if (testing::Test::HasFailure()) return;
  }
}

// Display bytes alone let skipping stop at black and white: they must still be the same.
std::vector<uint8_t> pixels_alone(const Volume& volume, const zox_render_view& view) {
  std::vector<uint8_t> pixels(static_cast<size_t>(view.width) * static_cast<size_t>(view.height), 0x5A);
  zox_render_picture planes;
  zox_render_picture_init(&planes);
  planes.pixels = pixels.data();
  const int status = zox_render(volume.get(), &view, nullptr, &planes, nullptr);
  EXPECT_TRUE(status == ZOX_RENDER_OK || status == ZOX_RENDER_EMPTY) << zox_render_last_error();
  return pixels;
}

TEST(SameBytes, ForEveryNumberOfThreads) {
  std::vector<Pool> pools;
  for (const int threads : {1, 2, 3, 7}) pools.push_back(make_pool(threads));
  for_seeds(40, [&](const Drawn& drawn) {
    const Volume volume = make_volume(*drawn.scene, drawn.layout);
    const Picture alone = render(volume, drawn.view);
    for (const Pool& pool : pools) {
      zox_render_run run;
      zox_render_run_init(&run);
      run.pool = pool.get();
      EXPECT_EQ(difference(alone, render(volume, drawn.view, &run)), "");
      EXPECT_EQ(difference(alone, render(volume, drawn.view, &run)), "") << "the pool used again";
    }
    for (const auto spread : {in_threads, backwards}) {
      zox_render_run run;
      zox_render_run_init(&run);
      run.parallel_for = spread;
      EXPECT_EQ(difference(alone, render(volume, drawn.view, &run)), "") << "on the caller's threads";
    }
  });
}

TEST(SameBytes, WhenTheVolumeIsMadeByManyThreads) {
  const Pool pool = make_pool(3);
  for_seeds(40, [&](const Drawn& drawn) {
    const Picture alone = render(make_volume(*drawn.scene, drawn.layout), drawn.view);
    zox_render_run run;
    zox_render_run_init(&run);
    run.pool = pool.get();
    const zox_render_volume_options options = options_of(drawn.layout);
    zox_render_volume* made = nullptr;
    ASSERT_EQ(zox_render_volume_create(&drawn.scene->array, &options, &run, &made), ZOX_RENDER_OK);
    EXPECT_EQ(difference(alone, render(Volume(made), drawn.view)), "");
  });
}

TEST(SameBytes, WithAndWithoutSkipping) {
  int64_t cast = 0, samples = 0;
  for_seeds(150, [&](const Drawn& drawn) {
    zox_render_volume_options unbounded = options_of(drawn.layout);
    unbounded.bounds = 0;
    const Volume volume = make_volume(*drawn.scene, drawn.layout);
    zox_render_view every = drawn.view;
    every.skip = 0;
    const Picture skipped = render(volume, drawn.view);
    const Picture whole = render(volume, every);
    EXPECT_EQ(difference(whole, skipped), "");
    EXPECT_EQ(difference(whole, render(make_volume(*drawn.scene, unbounded), drawn.view)), "")
        << "without bounds";
    EXPECT_EQ(skipped.stats.samples, whole.stats.samples);
    EXPECT_EQ(skipped.stats.rays, whole.stats.rays);
    if (whole.status == ZOX_RENDER_OK) {
      EXPECT_EQ(whole.stats.samples_cast, whole.stats.samples);
    }
    cast += skipped.stats.samples_cast;
    samples += skipped.stats.samples;
  });
  EXPECT_LT(cast, samples) << "nothing was skipped in any picture";
}

TEST(SameBytes, WhenOnlyDisplayBytesAreWanted) {
  for_seeds(150, [](const Drawn& drawn) {
    const Volume volume = make_volume(*drawn.scene, drawn.layout);
    const zox_render_volume_info info = info_of(volume);
    zox_render_view view = drawn.view;
    for (const double share : {0.0, 0.3, 0.9}) {
      view.window_center = info.lowest + share * (info.highest - info.lowest);
      view.window_width = 0.2 * (info.highest - info.lowest) + 1e-3;
      zox_render_view every = view;
      every.skip = 0;
      const Picture picture = render(volume, view);
      if (picture.status != ZOX_RENDER_OK) return;
      EXPECT_EQ(picture.pixels, pixels_alone(volume, view));
      EXPECT_EQ(picture.pixels, pixels_alone(volume, every));
    }
  });
}

TEST(SameBytes, OfTheCallersSlicesAndACopyOfThem) {
  for_seeds(40, [](const Drawn& drawn) {
    zox_render_volume_options copied = options_of(ZOX_RENDER_STACK);
    copied.copy = 1;
    const Volume referring = make_volume(*drawn.scene, ZOX_RENDER_STACK);
    const Volume copy = make_volume(*drawn.scene, copied);
    EXPECT_EQ(info_of(copy).copied, 1);
    EXPECT_EQ(difference(render(referring, drawn.view), render(copy, drawn.view)), "");
  });
}

TEST(SameBytes, FromManyThreadsAtOnceOnOneVolumeAndPool) {
  const Drawn drawn = draw(12345);
  const Volume volume = make_volume(*drawn.scene, drawn.layout);
  const Pool pool = make_pool(3);
  const Picture alone = render(volume, drawn.view);
  std::vector<std::thread> callers;
  std::vector<int> equal(4, 0);
  for (size_t caller = 0; caller < equal.size(); ++caller)
    callers.emplace_back([&, caller] {
      zox_render_run run;
      zox_render_run_init(&run);
      run.pool = pool.get();
      for (int i = 0; i < 5; ++i)
        equal[caller] += difference(render(volume, drawn.view, &run), alone).empty();
    });
  for (std::thread& caller : callers) caller.join();
  EXPECT_EQ(equal, std::vector<int>(4, 5));
}

}  // namespace
