#include "render.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <memory>
#include <string>
#include <thread>

#include "camera.h"
#include "clip.h"
#include "failure.h"
#include "packing.h"
#include "progress.h"
#include "tile_caster.h"

namespace zox_mip {
namespace {

// The general nearest operations have 21 fraction bits: coordinates below 1024.
constexpr int kMaxStackNearestSize = 1024;

double step_millimetres(const Volume& volume, double step) {
  return step * std::min({length(volume.axes[0]), length(volume.axes[1]), length(volume.axes[2])});
}

double longest_diagonal(const Volume& volume) {
  double longest = 0;
  for (int corner = 0; corner < 4; ++corner) {
    const Vec3 diagonal = {double(volume.size[0]), (corner & 1 ? -1.0 : 1.0) * volume.size[1],
                           (corner & 2 ? -1.0 : 1.0) * volume.size[2]};
    longest = std::max(longest, length(to_millimetres(volume.axes, diagonal)));
  }
  return longest;
}

int most_samples(const Volume& volume, double step) {
  const double samples = std::ceil(longest_diagonal(volume) / step) + 2;
  if (samples > kMaxSamples)
    fail("With this --step a ray of this volume takes more than " + std::to_string(kMaxSamples) +
         " samples.");
  return static_cast<int>(samples);
}

DepthMask depth_mask(const std::optional<DepthRange>& range, double step, int max_samples) {
  DepthMask mask;
  if (!range) return mask;
  // The middle of the volume is sample 0, and no sample is farther from it than a whole ray is long.
  mask.first = -max_samples;
  for (int n = -max_samples; n <= max_samples; ++n)
    mask.selected.push_back(n * step >= range->near && n * step <= range->far);
  return mask;
}

// Everything that the threads share; only the counters and the picture change.
struct Job {
  const Volume& volume;
  const Camera& camera;
  const SampleBox& box;
  const DepthMask& mask;
  double step;  // millimetres
  int width, height;
  std::vector<int16_t>& maxima;
  std::atomic<int> next_tile = 0;
  std::atomic<int64_t> samples = 0;
  std::atomic<int> status = ZOX_STS_NO_ERROR;

  int tile_columns() const { return (width + kTileEdge - 1) / kTileEdge; }
  int tiles() const { return tile_columns() * ((height + kTileEdge - 1) / kTileEdge); }
};

// Returns the number of samples, or the library's status in `status` if that is not 0.
int64_t cast_tile(Job& job, int tile, TileCaster& caster) {
  const int left = tile % job.tile_columns() * kTileEdge;
  const int top = tile / job.tile_columns() * kTileEdge;
  int64_t samples = 0;
  caster.clear();
  for (int row = top; row < std::min(top + kTileEdge, job.height); ++row)
    for (int column = left; column < std::min(left + kTileEdge, job.width); ++column) {
      const Ray ray = job.camera.ray(column, row);
      const Vec3 voxel_middle = {(job.volume.size[0] - 1) / 2.0, (job.volume.size[1] - 1) / 2.0,
                                 (job.volume.size[2] - 1) / 2.0};
      const Vec3 middle = voxel_middle + to_voxels(job.volume.axes, ray.middle);
      const Vec3 step = to_voxels(job.volume.axes, ray.direction * job.step);
      const Stretch stretch = clip(job.box, middle, step);
      if (stretch.count == 0 || !job.mask.admits_any(stretch)) continue;
      caster.add(middle, step, stretch,
                 &job.maxima[static_cast<size_t>(row) * static_cast<size_t>(job.width) +
                             static_cast<size_t>(column)]);
      samples += stretch.count;
    }
  if (const int status = caster.run(); status != ZOX_STS_NO_ERROR) job.status = status;
  return samples;
}

void work(Job& job, TileCaster& caster, Progress* progress) {
  for (int tile = job.next_tile++; tile < job.tiles(); tile = job.next_tile++) {
    if (job.status != ZOX_STS_NO_ERROR) return;
    job.samples += cast_tile(job, tile, caster);
    if (progress) progress->show(static_cast<double>(tile + 1) / job.tiles());
  }
}

void check_layout(const Volume& volume, const Options& options) {
  if (options.layout != Layout::kStack || options.interpolation != Interpolation::kNearest) return;
  if (*std::max_element(volume.size.begin(), volume.size.end()) > kMaxStackNearestSize)
    fail("--layout stack with --interpolation nearest takes volumes of up to " +
         std::to_string(kMaxStackNearestSize) + " voxels along an axis.");
}

}  // namespace

Rendering render(Volume& volume, const Options& options, bool show_progress) {
  check_layout(volume, options);
  const double step = step_millimetres(volume, options.step);
  const int max_samples = most_samples(volume, step);
  const PackedVolume packed(volume, options.layout);
  const Camera camera(options.view, options.projection, options.width, options.height, volume.axes,
                      {double(volume.size[0]), double(volume.size[1]), double(volume.size[2])});
  const SampleBox box = sample_box(volume.size, options.interpolation, options.layout, max_samples);
  const DepthMask mask = depth_mask(options.depth_range, step, max_samples);
  const CastOperation cast =
      cast_operation(options.layout, options.projection, options.interpolation, volume.type, volume.size[2]);
  Rendering rendering;
  rendering.maxima.assign(static_cast<size_t>(options.width) * static_cast<size_t>(options.height), kNothing);
  Job job{volume, camera, box, mask, step, options.width, options.height, rendering.maxima};

  // All memory is taken here, so that no thread can run out of it.
  std::vector<std::unique_ptr<TileCaster>> casters;
  const int threads = std::min(options.threads, job.tiles());
  casters.reserve(static_cast<size_t>(threads));
  for (int t = 0; t < threads; ++t)
    casters.push_back(std::make_unique<TileCaster>(packed.record(), volume.type, cast, mask, max_samples));
  {
    Progress progress;
    std::vector<std::jthread> helpers;
    for (int t = 1; t < threads; ++t)
      helpers.emplace_back([&, t] { work(job, *casters[size_t(t)], nullptr); });
    work(job, *casters[0], show_progress ? &progress : nullptr);
  }
  if (job.status != ZOX_STS_NO_ERROR)
    fail(std::string("The library could not sample the volume: ") + zox_GetStringStatus(job.status) + ".");
  rendering.samples = job.samples;
  return rendering;
}

}  // namespace zox_mip
