// Volumes: making them and asking about them.
#include <algorithm>
#include <cmath>

#include "picture/window.h"
#include "volume/volume.h"

using render::checked;
using render::guarded;
using render::require;
using render::Volume;

namespace {

const Volume& volume_of(const zox_render_volume* handle) {
  require(handle != nullptr, "volume is null.");
  return *handle->volume;
}

void fill_corners(const render::Frame& frame, double (&corners)[8][3]) {
  for (int corner = 0; corner < 8; ++corner) {
    const render::Vec3 point =
        frame.point({{corner & 1 ? frame.size[0] - 1.0 : 0, corner & 2 ? frame.size[1] - 1.0 : 0,
                      corner & 4 ? frame.regions.back().high : frame.regions.front().low}});
    std::copy(point.at.begin(), point.at.end(), corners[corner]);
  }
}

void fill_info(const Volume& volume, zox_render_volume_info& info) {
  std::copy(volume.frame.size.begin(), volume.frame.size.end(), info.size);
  info.layout = volume.layout == render::Layout::kBricks ? ZOX_RENDER_BRICKS : ZOX_RENDER_STACK;
  info.bits = 16;
  info.copied = volume.copied;
  info.regions = static_cast<int32_t>(volume.frame.regions.size());
  info.sample_slope = volume.storage.slope;
  info.sample_intercept = volume.storage.intercept;
  info.exact = volume.exact;
  info.lowest = volume.lowest;
  info.highest = volume.highest;
  const render::Vec3 middle = volume.frame.point(volume.frame.middle());
  std::copy(middle.at.begin(), middle.at.end(), info.center);
  fill_corners(volume.frame, info.corners);
  info.voxel_bytes = volume.voxel_bytes;
  info.bounds_bytes = volume.bounds.bytes();
}

// Bin of a value between lowest and highest, the highest in the last.
size_t bin_of(double value, const Volume& volume, int bins) {
  const double width = volume.highest - volume.lowest;
  const double bin = width > 0 ? (value - volume.lowest) / width * bins : 0;
  return static_cast<size_t>(std::clamp(bin, 0.0, bins - 1.0));
}

}  // namespace

extern "C" {

void zox_render_array_init(zox_render_array* array) {
  if (!array) return;
  *array = {};
  array->record_size = sizeof *array;
  for (int a = 0; a < 3; ++a) array->axes[a][a] = 1;
  array->slope = 1;
}

void zox_render_volume_options_init(zox_render_volume_options* options) {
  if (!options) return;
  *options = {};
  options->record_size = sizeof *options;
  options->bounds = 1;
}

int zox_render_volume_create(const zox_render_array* array, const zox_render_volume_options* options,
                             const zox_render_run* run, zox_render_volume** volume) {
  return guarded([&] {
    require(volume != nullptr, "volume is null.");
    *volume = nullptr;
    zox_render_volume_options chosen;
    zox_render_volume_options_init(&chosen);
    if (options) chosen = checked(options, "options");
    render::Work work(run);
    auto made = std::make_unique<zox_render_volume>();
    made->volume = render::make_volume(checked(array, "array"), chosen, work);
    *volume = made.release();
  });
}

void zox_render_volume_destroy(zox_render_volume* volume) { delete volume; }

void zox_render_volume_info_init(zox_render_volume_info* info) {
  if (!info) return;
  *info = {};
  info->record_size = sizeof *info;
}

int zox_render_volume_get_info(const zox_render_volume* volume, zox_render_volume_info* info) {
  return guarded([&] {
    checked(info, "info");
    fill_info(volume_of(volume), *info);
  });
}

int zox_render_histogram(const zox_render_volume* handle, int bins, uint64_t* counts) {
  return guarded([&] {
    const Volume& volume = volume_of(handle);
    require(bins >= 1 && bins <= 65536, "bins must be 1 to 65536.");
    require(counts != nullptr, "counts is null.");
    render::Work work(nullptr);
    const render::Statistics& statistics = volume.counted(work);
    std::fill(counts, counts + bins, 0);
    for (int sample = INT16_MIN; sample <= INT16_MAX; ++sample)
      if (statistics.of(sample))
        counts[bin_of(volume.storage.value(sample), volume, bins)] += statistics.of(sample);
  });
}

int zox_render_percentile(const zox_render_volume* handle, double share, double* value) {
  return guarded([&] {
    const Volume& volume = volume_of(handle);
    require(share >= 0 && share <= 1, "share must be 0 to 1.");
    require(value != nullptr, "value is null.");
    render::Work work(nullptr);
    *value = volume.storage.value(volume.counted(work).percentile(share));
  });
}

int zox_render_default_window(const zox_render_volume* handle, double* center, double* width) {
  return guarded([&] {
    const Volume& volume = volume_of(handle);
    require(center && width, "center or width is null.");
    render::Work work(nullptr);
    const render::Window window = render::default_window(volume, work);
    *center = window.center;
    *width = window.width;
  });
}

int zox_render_sample_counts(const zox_render_volume* handle, uint64_t counts[65536]) {
  return guarded([&] {
    const Volume& volume = volume_of(handle);
    require(counts != nullptr, "counts is null.");
    render::Work work(nullptr);
    const std::vector<uint64_t>& all = volume.counted(work).counts();
    std::copy(all.begin(), all.end(), counts);
  });
}

int zox_render_window_of_counts(double sample_slope, double sample_intercept, const uint64_t counts[65536],
                                double* center, double* width) {
  return guarded([&] {
    require(std::isfinite(sample_slope) && sample_slope > 0 && std::isfinite(sample_intercept),
            "sample_slope must be finite and above 0, and sample_intercept finite.");
    require(counts && center && width, "counts, center or width is null.");
    const render::Window window =
        render::default_window(render::Statistics(counts), sample_slope, sample_intercept);
    *center = window.center;
    *width = window.width;
  });
}

int zox_render_voxel(const zox_render_volume* handle, const int32_t voxel[3], double* value) {
  return guarded([&] {
    const Volume& volume = volume_of(handle);
    require(voxel && value, "voxel or value is null.");
    int at[3];
    for (size_t a = 0; a < 3; ++a) {
      at[a] = voxel[a] - volume.first[a];
      require(voxel[a] >= volume.first[a] && at[a] < volume.size[a], "The voxel lies outside of the volume.");
    }
    *value = volume.storage.value(volume.sample(at[0], at[1], at[2]));
  });
}

}  // extern "C"
