// How calls run: progress, cancelling at any moment, statistics.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "effort.h"
#include "library.h"

using namespace zox_test;

namespace {

struct Watch {
  std::vector<double> shares;
  std::thread::id caller = std::this_thread::get_id();
  bool elsewhere = false;
  int cancel_at = -1;  // the call, counted from 0, that asks for the end; -1: none

  static int progress(void* user, double share) {
    Watch& watch = *static_cast<Watch*>(user);
    watch.elsewhere = watch.elsewhere || std::this_thread::get_id() != watch.caller;
    watch.shares.push_back(share);
    return static_cast<int>(watch.shares.size()) - 1 == watch.cancel_at ? 17 : 0;
  }
};

zox_render_run run_of(Watch& watch, zox_render_pool* pool) {
  zox_render_run run;
  zox_render_run_init(&run);
  run.pool = pool;
  run.progress = Watch::progress;
  run.progress_user = &watch;
  return run;
}

void expect_shares(const Watch& watch) {
  EXPECT_FALSE(watch.shares.empty());
  EXPECT_FALSE(watch.elsewhere) << "progress was told on another thread";
  double before = 0;
  for (const double share : watch.shares) {
    EXPECT_GE(share, before);
    EXPECT_LE(share, 1);
    before = share;
  }
}

std::unique_ptr<Scene> noise(int type, int edge) {
  Random random(5);
  const std::array<int, 3> size = {edge, edge, edge};
  return make_scene(type, size, random_voxels(random, size, traits_of(type), Content::kNoise));
}

zox_render_view oblique(int edge) {
  zox_render_view view;
  zox_render_view_init(&view);
  view.width = view.height = edge;
  view.azimuth = 30;
  view.elevation = 10;
  return view;
}

class Run : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(, Run, testing::Values(1, 3),
                         [](const auto& info) { return std::to_string(info.param) + "_threads"; });

TEST_P(Run, ProgressGrowsOnTheCallingThread) {
  const Pool pool = make_pool(GetParam());
  const auto scene = noise(ZOX_RENDER_INT16, 100);
  Watch packing, rendering;
  const zox_render_run pack = run_of(packing, pool.get()), cast = run_of(rendering, pool.get());
  const zox_render_volume_options options = options_of(ZOX_RENDER_BRICKS);
  zox_render_volume* made = nullptr;
  ASSERT_EQ(zox_render_volume_create(&scene->array, &options, &pack, &made), ZOX_RENDER_OK);
  const Volume volume(made);
  ASSERT_EQ(render(volume, oblique(200), &cast).status, ZOX_RENDER_OK);
  expect_shares(packing);
  expect_shares(rendering);
}

TEST_P(Run, CancelsAtAnyMomentAndGoesOnAsIfNothingWas) {
  const Pool pool = make_pool(GetParam());
  const auto scene = noise(ZOX_RENDER_UINT8, 60);
  const Volume volume = make_volume(*scene, ZOX_RENDER_STACK);
  const zox_render_view view = oblique(150);
  const Picture whole = render(volume, view);
  int cancelled = 0;
  for (int moment = 0;; moment = moment < 8 ? moment + 1 : moment * 3 / 2) {
    Watch watch;
    watch.cancel_at = moment;
    const zox_render_run run = run_of(watch, pool.get());
    const Picture picture = render(volume, view, &run);
    if (static_cast<int>(watch.shares.size()) <= moment) {
      EXPECT_EQ(difference(picture, whole), "");
      break;
    }
    EXPECT_EQ(picture.status, ZOX_RENDER_CANCELLED) << "at call " << moment;
    EXPECT_STRNE(zox_render_last_error(), "");
    ++cancelled;
    EXPECT_EQ(difference(render(volume, view), whole), "") << "after call " << moment;
  }
  EXPECT_GT(cancelled, 0);
}

TEST_P(Run, CancelsTheMakingOfAVolume) {
  const Pool pool = make_pool(GetParam());
  for (const int layout : {ZOX_RENDER_BRICKS, ZOX_RENDER_STACK})
    for (int moment = 0;; moment = moment < 8 ? moment + 1 : moment * 3 / 2) {
      const auto scene = noise(ZOX_RENDER_FLOAT32, 70);
      Watch watch;
      watch.cancel_at = moment;
      const zox_render_run run = run_of(watch, pool.get());
      const zox_render_volume_options options = options_of(layout);
      zox_render_volume* made = nullptr;
      const int status = zox_render_volume_create(&scene->array, &options, &run, &made);
      if (static_cast<int>(watch.shares.size()) <= moment) {
        ASSERT_EQ(status, ZOX_RENDER_OK);
        zox_render_volume_destroy(made);
        break;
      }
      EXPECT_EQ(status, ZOX_RENDER_CANCELLED) << "at call " << moment;
    }
}

// Samples and rays are the plain renderer's, but for those that lie on the border.
TEST(Stats, CountTheSamplesOfAllRays) {
  const Seeds seeds = zox_test::seeds(1, 30);
  for (uint64_t seed = seeds.first; seed < seeds.first + seeds.count; ++seed) {
    SCOPED_TRACE("ZOX_TEST_SEED=" + std::to_string(seed));
    Random random(seed);
    const auto scene = random_scene(random, ZOX_RENDER_INT16, 20);
    const zox_render_view view = random_view(random, 40);
    const Volume volume = make_volume(*scene, random.pick({ZOX_RENDER_BRICKS, ZOX_RENDER_STACK}));
    const zox_render_geometry geometry = geometry_of(volume, view);
    const PlainVolume plain = plain_volume(*scene, volume);
    const PlainRenderer renderer(plain, view, geometry.pixel_size, geometry.step,
                                 play_of(*scene, info_of(volume), view));
    const Picture picture = render(volume, view);
    if (picture.status == ZOX_RENDER_EMPTY) continue;
    ASSERT_EQ(picture.status, ZOX_RENDER_OK) << zox_render_last_error();
    int64_t least = 0, most = 0, least_rays = 0, most_rays = 0;
    std::vector<PlainSample> samples;
    for (int row = 0; row < view.height; ++row)
      for (int column = 0; column < view.width; ++column) {
        renderer.ray(column, row, samples);
        int64_t sure = 0;
        for (const PlainSample& sample : samples) sure += sample.sure;
        least += sure, most += static_cast<int64_t>(samples.size());
        least_rays += sure > 0, most_rays += !samples.empty();
      }
    EXPECT_GE(picture.stats.samples, least);
    EXPECT_LE(picture.stats.samples, most);
    EXPECT_GE(picture.stats.rays, least_rays);
    EXPECT_LE(picture.stats.rays, most_rays);
    EXPECT_LE(picture.stats.samples_cast, picture.stats.samples);
    EXPECT_GE(picture.stats.samples_cast, 1);
    EXPECT_EQ(picture.stats.threads, 1);
  }
}

TEST(Stats, TellHowManyThreadsTookPart) {
  const auto scene = noise(ZOX_RENDER_UINT8, 20);
  const Volume volume = make_volume(*scene, ZOX_RENDER_STACK);
  for (const int threads : {1, 2, 5}) {
    const Pool pool = make_pool(threads);
    zox_render_run run;
    zox_render_run_init(&run);
    run.pool = pool.get();
    const int32_t used = render(volume, oblique(64), &run).stats.threads;
    EXPECT_GE(used, 1);
    EXPECT_LE(used, threads);
  }
}

// Bounds are an aid that must stay small.
TEST(Info, BoundsTakeThreePercentAtMost) {
  for (const int type : {ZOX_RENDER_UINT8, ZOX_RENDER_INT16})
    for (const int layout : {ZOX_RENDER_BRICKS, ZOX_RENDER_STACK}) {
      const zox_render_volume_info info = info_of(make_volume(*noise(type, 128), layout));
      EXPECT_LE(static_cast<double>(info.bounds_bytes), 0.03 * static_cast<double>(info.voxel_bytes));
      EXPECT_GT(info.bounds_bytes, 0u);
      EXPECT_EQ(info.layout, layout);
    }
}

TEST(Info, TellsWhatBecameOfTheArray) {
  const auto scene = make_scene(ZOX_RENDER_INT16, {4, 6, 11}, std::vector<double>(264, 3));
  scene->array.axes[2][2] = 2;
  scene->array.origin[0] = -100;
  const zox_render_volume_info info = info_of(make_volume(*scene, ZOX_RENDER_STACK));
  EXPECT_EQ(info.size[0], 4);
  EXPECT_EQ(info.size[1], 6);
  EXPECT_EQ(info.size[2], 11);
  EXPECT_EQ(info.exact, 1);
  EXPECT_EQ(info.bits, 16);
  EXPECT_EQ(info.regions, 1);
  EXPECT_EQ(info.copied, 0) << "packed 16-bit slices are taken as they are";
  EXPECT_EQ(info.center[0], -98.5);
  EXPECT_EQ(info.center[1], 2.5);
  EXPECT_EQ(info.center[2], 10);
  EXPECT_EQ(info.corners[1][0] - info.corners[0][0], 3);
  EXPECT_EQ(info.corners[2][1] - info.corners[0][1], 5);
  EXPECT_EQ(info.corners[4][2] - info.corners[0][2], 20);
  EXPECT_EQ(info.corners[7][0], -97);
}

}  // namespace
