#include "overlap.h"

#include <algorithm>

namespace zox_check {
namespace {

std::vector<Range> sorted_planes(const zox_Rays& rays, int planes, std::size_t width) {
  std::vector<Range> sorted;
  sorted.reserve(planes);
  for (int k = 0; k < planes; ++k) {
    const char* begin = static_cast<const char*>(rays.planes[k]);
    sorted.push_back({begin, begin + width, k, "planes"});
  }
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const Range& a, const Range& b) { return a.begin < b.begin; });
  return sorted;
}

}  // namespace

void Ranges::add(const void* begin, std::size_t bytes, const char* name, int number) {
  if (bytes == 0) return;
  const char* first = static_cast<const char*>(begin);
  ranges_.push_back({first, first + bytes, number, name});
}

void Ranges::add_batch(const zox_Rays& rays, int nrays, int planes) {
  add(&rays, sizeof rays, "the ray batch record");
  add(rays.planes, planes * sizeof(void*), "planes");
  add(rays.nsamples, nrays * sizeof(int32_t), "nsamples");
}

void Ranges::add_paths(const zox_Rays& rays, bool parallel) {
  const int steps = parallel ? 1 : rays.nrays;
  add(rays.starts, rays.nrays * sizeof(double*), "starts");
  add(rays.steps, steps * sizeof(double*), "steps");
  for (int r = 0; r < rays.nrays; ++r) add(rays.starts[r], 3 * sizeof(double), "starts", r);
  for (int r = 0; r < steps; ++r) add(rays.steps[r], 3 * sizeof(double), "steps", r);
}

void Ranges::add_stack(const zox_Volume& volume) {
  add(&volume, sizeof volume, "the volume record");
  add(volume.slices, std::max(volume.nslices, 0) * sizeof(void*), "slices");
  add(volume.regslice, volume.nregions * sizeof(int32_t), "regslice");
  add(volume.regbounds, (volume.nregions + std::size_t{1}) * sizeof(double), "regbounds");
  add(volume.regscale, volume.nregions * sizeof(double), "regscale");
}

void check_plane_overlaps(Report& report, const zox_Rays& rays, int planes, std::size_t width,
                          const Ranges& read) {
  const std::vector<Range> sorted = sorted_planes(rays, planes, width);
  // All planes are equally wide, so in this order an overlap is one between neighbours.
  for (std::size_t i = 1; i < sorted.size(); ++i) {
    if (sorted[i].begin >= sorted[i - 1].end) continue;
    const auto [low, high] = std::minmax(sorted[i - 1].number, sorted[i].number);
    report.say({-1, high}, "planes[%d] overlaps planes[%d]", high, low);
  }
  for (const Range& range : read.all()) {
    const auto plane = std::upper_bound(sorted.begin(), sorted.end(), range.begin,
                                        [](const char* at, const Range& p) { return at < p.end; });
    if (plane == sorted.end() || plane->begin >= range.end) continue;
    if (range.number < 0) {
      report.say({-1, plane->number}, "planes[%d] overlaps %s", plane->number, range.name);
    } else {
      report.say({range.number, plane->number}, "planes[%d] overlaps %s[%d]", plane->number, range.name,
                 range.number);
    }
  }
}

}  // namespace zox_check
