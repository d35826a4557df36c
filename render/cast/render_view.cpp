#include "cast/render_view.h"

#include <algorithm>
#include <memory>

#include "cast/tile.h"
#include "picture/window.h"

namespace render {
namespace {

constexpr int kTilesPerTask = 32;
constexpr int kLongestStretch = 128;  // samples: planes that stay in the nearest caches
constexpr double kStretchVoxels = 16;
// Nearest stack operations reach over 1024 voxels, of which a stretch may take half.
constexpr double kMostVoxels = 500;

// Rows as far apart as told, or packed.
int64_t pitch(const void* plane, int64_t given, int64_t packed) {
  if (!plane) return 0;
  require(given == 0 || std::abs(given) >= packed, "A pitch is smaller than a row of the picture.");
  return given ? given : packed;
}

zox_render_picture checked_picture(const zox_render_picture& record, const zox_render_view& view) {
  zox_render_picture picture = record;
  require(!picture.depths || view.reduction != ZOX_RENDER_MEAN, "A mean has no depth.");
  picture.pixels_pitch = pitch(picture.pixels, picture.pixels_pitch, view.width);
  picture.samples_pitch = pitch(picture.samples, picture.samples_pitch, int64_t{2} * view.width);
  picture.depths_pitch = pitch(picture.depths, picture.depths_pitch, int64_t{4} * view.width);
  return picture;
}

Wanted wanted(const zox_render_view& view, const zox_render_picture& picture) {
  const int r = view.reduction;
  const bool both = r == ZOX_RENDER_LARGEST_MAGNITUDE;
  return {r == ZOX_RENDER_MAXIMUM || both, r == ZOX_RENDER_MINIMUM || both, r == ZOX_RENDER_MEAN,
          picture.depths != nullptr};
}

// Voxels that a ray passes from sample to sample, along the axis where these are most.
double voxels_per_sample(const Frame& frame, double step) {
  double most = 0;
  for (size_t a = 0; a < 3; ++a) most = std::max(most, length(frame.rows[a]) * step);
  for (const Region& region : frame.regions)
    most = std::max(most, length(frame.rows[2]) * step * region.slices_per_unit());
  return most;
}

int longest_stretch(const Frame& frame, double step) {
  return static_cast<int>(
      std::clamp(kMostVoxels / voxels_per_sample(frame, step), 1.0, double{kLongestStretch}));
}

// What cannot be told from black is as good as no sample, what cannot be told from white as good as any.
void stop_at_window(Scene& scene) {
  if (scene.picture.samples || scene.picture.depths) return;
  const Wanted& wanted = scene.casting.wanted;
  if (wanted.largest == wanted.smallest) return;
  const int black = scene.shades.last_black(), white = scene.shades.first_white();
  const int floor = wanted.largest ? black : white, ceiling = wanted.largest ? white : black;
  if (floor >= kLowestSample && floor <= kHighestSample) scene.floor = floor;
  if (ceiling >= kLowestSample && ceiling <= kHighestSample) scene.ceiling = ceiling;
}

void render_tiles(const Scene& scene, Work& work, Counts& counts) {
  const int columns = (scene.width + kTileEdge - 1) / kTileEdge;
  const int tiles = columns * ((scene.height + kTileEdge - 1) / kTileEdge);
  std::mutex mutex;
  std::vector<std::unique_ptr<Tile>> idle;
  work.spread((tiles + kTilesPerTask - 1) / kTilesPerTask, 1, [&](int task) {
    std::unique_ptr<Tile> tile;
    {
      const std::lock_guard lock(mutex);
      if (!idle.empty()) {
        tile = std::move(idle.back());
        idle.pop_back();
      }
    }
    if (!tile) tile = std::make_unique<Tile>(scene);
    tile->begin_task();
    for (int t = task * kTilesPerTask; t < std::min(task * kTilesPerTask + kTilesPerTask, tiles); ++t)
      tile->render(t % columns * kTileEdge, t / columns * kTileEdge);
    const std::lock_guard lock(mutex);
    idle.push_back(std::move(tile));
  });
  for (const auto& tile : idle) {
    counts.samples += tile->counts().samples;
    counts.cast += tile->counts().cast;
    counts.rays += tile->counts().rays;
    counts.seconds_bounds += tile->counts().seconds_bounds;
    counts.seconds_cast += tile->counts().seconds_cast;
    counts.seconds_window += tile->counts().seconds_window;
  }
}

}  // namespace

void render_view(const Volume& volume, const zox_render_view& view, const zox_render_picture& record,
                 Work& work, zox_render_stats& stats) {
  const Camera camera = make_camera(view, volume.frame);
  const Rays rays(camera, volume.frame, view);
  const zox_render_picture picture = checked_picture(record, view);
  Window window{view.window_center, view.window_width};
  if (view.window_width == 0) window = default_window(volume, work);
  const Storage& storage = volume.storage;
  const Shades shades(storage.slope, storage.intercept, window.center, window.width);
  const bool nearest = view.interpolation == ZOX_RENDER_NEAREST;
  const int longest = longest_stretch(volume.frame, camera.step);
  const Order order(view.reduction, storage.slope, storage.intercept);
  Scene scene{
      volume,
      rays,
      {volume, sampler(volume.layout, nearest), !camera.perspective && volume.frame.even(),
       wanted(view, picture), longest},
      order,
      shades,
      picture,
      view.width,
      view.height,
      owned_box(volume, nearest),
      readable_box(volume, nearest),
      view.skip && !volume.bounds.empty() && view.reduction != ZOX_RENDER_MEAN,
      std::clamp(static_cast<int>(kStretchVoxels / voxels_per_sample(volume.frame, camera.step)), 2, longest),
      order.none(),
      order.none()};
  if (scene.skip) stop_at_window(scene);
  Counts counts;
  render_tiles(scene, work, counts);
  stats.samples = counts.samples;
  stats.samples_cast = counts.cast;
  stats.rays = counts.rays;
  stats.window_center = window.center;
  stats.window_width = window.width;
  stats.seconds_bounds = counts.seconds_bounds;
  stats.seconds_cast = counts.seconds_cast;
  stats.seconds_window = counts.seconds_window;
  if (counts.samples == 0) fail(ZOX_RENDER_EMPTY, "The view holds no sample of the volume.");
}

}  // namespace render
