// Pictures.
#include <cmath>

#include "cast/render_view.h"
#include "picture/merge.h"
#include "picture/window.h"

using render::checked;
using render::guarded;
using render::require;

extern "C" {

void zox_render_picture_init(zox_render_picture* picture) {
  if (!picture) return;
  *picture = {};
  picture->record_size = sizeof *picture;
}

void zox_render_stats_init(zox_render_stats* stats) {
  if (!stats) return;
  *stats = {};
  stats->record_size = sizeof *stats;
}

int zox_render(const zox_render_volume* volume, const zox_render_view* view, const zox_render_run* run,
               const zox_render_picture* picture, zox_render_stats* stats) {
  return guarded([&] {
    const auto begin = std::chrono::steady_clock::now();
    require(volume != nullptr, "volume is null.");
    zox_render_stats own;
    zox_render_stats_init(&own);
    zox_render_stats& told = stats ? *stats : own;
    checked(&told, "stats");
    render::Work work(run);
    render::render_view(*volume->volume, checked(view, "view"), checked(picture, "picture"), work, told);
    told.threads = work.threads();
    told.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  });
}

int zox_render_merge(int32_t reduction, double sample_slope, double sample_intercept, int64_t count,
                     int16_t* into_samples, int32_t* into_depths, const int16_t* other_samples,
                     const int32_t* other_depths) {
  return guarded([&] {
    require(reduction == ZOX_RENDER_MAXIMUM || reduction == ZOX_RENDER_MINIMUM ||
                reduction == ZOX_RENDER_LARGEST_MAGNITUDE,
            "Only maxima, minima and largest magnitudes can be merged.");
    require(std::isfinite(sample_slope) && sample_slope > 0 && std::isfinite(sample_intercept),
            "sample_slope must be finite and above 0, and sample_intercept finite.");
    require(count >= 0, "count must not be negative.");
    require(count == 0 || (into_samples && other_samples), "The samples of one picture are null.");
    require(!into_depths == !other_depths, "The depths of one picture are null, those of the other are not.");
    render::merge({reduction, sample_slope, sample_intercept}, count, into_samples, into_depths,
                  other_samples, other_depths);
  });
}

int zox_render_window(double sample_slope, double sample_intercept, double window_center, double window_width,
                      int64_t count, const int16_t* samples, uint8_t* pixels) {
  return guarded([&] {
    const render::Shades shades(sample_slope, sample_intercept, window_center, window_width);
    require(count >= 0, "count must not be negative.");
    require(count == 0 || (samples && pixels), "samples or pixels are null.");
    shades.apply(samples, count, pixels);
  });
}

}  // extern "C"
