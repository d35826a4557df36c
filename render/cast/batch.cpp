#include "cast/batch.h"

#include <algorithm>

namespace render {
namespace {

constexpr int kBrickDepth = 32;
constexpr uint64_t kLayerVoxels = 64 * 64 * 32;  // of one brick

// Positions of nearest stack operations stay below 1024, the half of rounding included.
constexpr int kNearestReach = 1000;

constexpr int32_t kFirstSlice = 0;
constexpr double kSlicesPerUnit = 1;

}  // namespace

Batch::Batch(const Casting& casting)
    : casting_(casting), samples_(static_cast<size_t>(casting.most_samples) * kPlanePitch) {
  items_.reserve(kBatchRays);
  for (int k = 0; k < casting.most_samples; ++k) planes_.push_back(samples_.data() + k * kPlanePitch);
  for (size_t r = 0; r < kBatchRays; ++r) {
    start_pointers_[r] = starts_[r].data();
    step_pointers_[r] = steps_[r].data();
  }
}

Batch::Extent Batch::extent(size_t from, size_t count) const {
  std::array<double, 3> low, high;
  low.fill(1e300);
  high.fill(-1e300);
  for (size_t i = from; i < from + count; ++i) {
    const Item& item = items_[i];
    for (size_t a = 0; a < 3; ++a) {
      const double start = item.line.middle[a] + item.first * item.line.step[a];
      const double end = start + (item.count - 1) * item.line.step[a];
      low[a] = std::min({low[a], start, end});
      high[a] = std::max({high[a], start, end});
    }
  }
  Extent extent;
  for (size_t a = 0; a < 3; ++a) {
    extent.low[a] = std::max(static_cast<int>(low[a] / kGrid) - casting_.volume.first[a], 0);
    extent.high[a] = std::max(static_cast<int>(high[a] / kGrid) - casting_.volume.first[a], 0);
  }
  return extent;
}

void Batch::set_bricks(const Extent& extent) {
  const Bricks& bricks = casting_.volume.bricks;
  const int layer = extent.low[2] / kBrickDepth;
  const uint64_t across = static_cast<uint64_t>(bricks.edge / 64);
  base_ = {0, 0, layer * kBrickDepth};
  record_.data = bricks.data + static_cast<uint64_t>(layer) * across * across * kLayerVoxels;
  record_.size = bricks.edge;
}

// Only the slices that the batch touches: the operations visit each slice that they are told of. One slice
// more stands before these, since nearest samples may lie half a voxel before the first.
void Batch::set_stack(const Extent& extent) {
  const Stack& stack = casting_.volume.stack;
  const bool nearest = casting_.sampler.nearest;
  base_ = {0, 0, nearest ? extent.low[2] - 1 : extent.low[2]};
  record_.slices = stack.slices.data() + base_[2] + 1;
  record_.rowoffs = stack.row_offsets.data();
  record_.nslices = extent.high[2] - base_[2] + (nearest ? 2 : 1);
  if (nearest && std::max(extent.high[0], extent.high[1]) >= kNearestReach) {
    base_[0] = extent.low[0];
    base_[1] = extent.low[1];
    shifted_slices_.clear();
    for (int s = 0; s < record_.nslices; ++s)
      shifted_slices_.push_back(static_cast<const int16_t*>(record_.slices[s]) + base_[0]);
    record_.slices = shifted_slices_.data();
    record_.rowoffs += base_[1];
  }
  boundaries_[1] = record_.nslices;
  record_.nregions = 1;
  record_.regslice = &kFirstSlice;
  record_.regbounds = boundaries_;
  record_.regscale = &kSlicesPerUnit;
}

void Batch::set_rays(size_t from, size_t count, bool parallel) {
  const Excess more = excess(casting_.sampler, parallel);
  std::array<double, 3> base;
  for (size_t a = 0; a < 3; ++a) base[a] = base_[a] + casting_.volume.first[a];
  for (size_t r = 0; r < count; ++r) {
    const Item& item = items_[from + r];
    for (size_t a = 0; a < 3; ++a)
      starts_[r][a] = (item.line.middle[a] + item.first * item.line.step[a]) * (1 / kGrid) - base[a];
    steps_[r] = {step_given(item.line.step[0], more.across), step_given(item.line.step[1], more.across),
                 step_given(item.line.step[2], more.down)};
    counts_[from + r] = item.count;
  }
}

void Batch::cast(size_t from, size_t count, const Extent& extent) {
  casting_.sampler.bricks ? set_bricks(extent) : set_stack(extent);
  // The lists of parallel nearest operations hold so many slices.
  const bool parallel =
      casting_.same_step && (casting_.sampler.bricks || record_.nslices <= ZOX_MAX_FIXED_SLICES);
  set_rays(from, count, parallel);
  std::vector<void*> shifted_planes;
  if (from > 0)
    for (void* plane : planes_) shifted_planes.push_back(static_cast<int16_t*>(plane) + from);
  zox_Rays rays{};
  rays.planes = from > 0 ? shifted_planes.data() : planes_.data();
  rays.nrays = static_cast<int32_t>(count);
  rays.starts = start_pointers_.data();
  rays.steps = step_pointers_.data();
  rays.nsamples = counts_.data() + from;
  const int status = (parallel ? casting_.sampler.parallel : casting_.sampler.divergent)(&record_, &rays);
  if (status != ZOX_STS_NO_ERROR) throw std::bad_alloc();
}

const Reduced& Batch::run() {
  const Extent all = extent(0, items_.size());
  const bool too_wide = std::max({all.high[0] - all.low[0], all.high[1] - all.low[1],
                                  all.high[2] - all.low[2]}) >= kNearestReach;
  if (!casting_.sampler.bricks && casting_.sampler.nearest && too_wide)
    for (size_t i = 0; i < items_.size(); ++i) cast(i, 1, extent(i, 1));
  else
    cast(0, items_.size(), all);
  zox_Rays rays{};
  rays.planes = planes_.data();
  rays.nrays = static_cast<int32_t>(items_.size());
  rays.nsamples = counts_.data();
  reduce(rays, casting_.wanted, casting_.sampler.bricks ? &casting_.volume.bricks.middle : nullptr, reduced_);
  return reduced_;
}

}  // namespace render
