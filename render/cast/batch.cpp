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

int voxel(double position, int first) {
  return std::max(static_cast<int>(position * (1 / kGrid)) - first, 0);
}

}  // namespace

void Batch::Extent::widen(size_t axis, double start, double end) {
  low[axis] = std::min(low[axis], std::min(start, end));
  high[axis] = std::max(high[axis], std::max(start, end));
}

int Batch::Extent::lowest(size_t axis, const Size3& first) const { return voxel(low[axis], first[axis]); }
int Batch::Extent::highest(size_t axis, const Size3& first) const { return voxel(high[axis], first[axis]); }

Batch::Batch(const Casting& casting)
    : casting_(casting),
      first_axis_(casting.sampler.nearest && !casting.sampler.bricks ? 0 : 2),
      samples_(static_cast<size_t>(casting.most_samples) * kPlanePitch) {
  clear();
  for (int k = 0; k < casting.most_samples; ++k) planes_.push_back(samples_.data() + k * kPlanePitch);
  shifted_planes_.resize(planes_.size());
  for (size_t r = 0; r < kBatchRays; ++r) {
    start_pointers_[r] = given_starts_[r].data();
    step_pointers_[r] = given_steps_[r].data();
  }
}

Batch::Extent Batch::place(size_t from, size_t count) {
  Extent extent;
  for (size_t r = 0; r < count; ++r) {
    const PlacedStretch& s = stretches_[from + r];
    const size_t lane = static_cast<size_t>(s.lane);
    const double more = counts_[from + r] - 1;
    for (size_t axis = 0; axis < 3; ++axis) {
      const double step = s.lines->step[axis][lane];
      const double start = s.lines->middle[axis][lane] + s.first * step;
      given_starts_[r][axis] = start;
      given_steps_[r][axis] = step;
      if (axis >= first_axis_) extent.widen(axis, start, start + more * step);
    }
  }
  return extent;
}

void Batch::set_bricks(const Extent& extent) {
  const Bricks& bricks = casting_.volume.bricks;
  const int layer = extent.lowest(2, casting_.volume.first) / kBrickDepth;
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
  const Size3& first = casting_.volume.first;
  base_ = {0, 0, extent.lowest(2, first) - (nearest ? 1 : 0)};
  record_.slices = stack.slices.data() + base_[2] + 1;
  record_.rowoffs = stack.row_offsets.data();
  record_.nslices = extent.highest(2, first) - base_[2] + (nearest ? 2 : 1);
  if (nearest && std::max(extent.highest(0, first), extent.highest(1, first)) >= kNearestReach) {
    base_[0] = extent.lowest(0, first);
    base_[1] = extent.lowest(1, first);
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

void Batch::set_rays(size_t count, bool parallel) {
  const Excess more = excess(casting_.sampler, parallel);
  const Triple excess_of = {more.across, more.across, more.down};
  Triple base;
  for (size_t a = 0; a < 3; ++a) base[a] = base_[a] + casting_.volume.first[a];
  for (size_t r = 0; r < count; ++r)
    for (size_t a = 0; a < 3; ++a) given_starts_[r][a] = given_starts_[r][a] * (1 / kGrid) - base[a];
  for (size_t r = 0; r < (parallel ? 1 : count); ++r)
    for (size_t a = 0; a < 3; ++a) given_steps_[r][a] = step_given(given_steps_[r][a], excess_of[a]);
}

void Batch::cast(size_t from, size_t count, const Extent& extent) {
  casting_.sampler.bricks ? set_bricks(extent) : set_stack(extent);
  // The lists of parallel nearest operations hold so many slices.
  const bool parallel =
      casting_.same_step && (casting_.sampler.bricks || record_.nslices <= ZOX_MAX_FIXED_SLICES);
  set_rays(count, parallel);
  zox_Rays rays{};
  rays.planes = planes_.data();
  if (from > 0) {
    for (size_t k = 0; k < planes_.size(); ++k) shifted_planes_[k] = static_cast<int16_t*>(planes_[k]) + from;
    rays.planes = shifted_planes_.data();
  }
  rays.nrays = static_cast<int32_t>(count);
  rays.starts = start_pointers_.data();
  rays.steps = step_pointers_.data();
  rays.nsamples = counts_.data() + from;
  const int status = (parallel ? casting_.sampler.parallel : casting_.sampler.divergent)(&record_, &rays);
  if (status != ZOX_STS_NO_ERROR) throw std::bad_alloc();
}

void Batch::cast_one_by_one() {
  for (size_t i = 0; i < size_; ++i) cast(i, 1, place(i, 1));
}

const Reduced& Batch::run() {
  const Extent extent = place(0, size_);
  double widest = 0;
  for (size_t a = 0; a < 3; ++a) widest = std::max(widest, extent.high[a] - extent.low[a]);
  const bool limited = !casting_.sampler.bricks && casting_.sampler.nearest;
  if (limited && widest >= kNearestReach * kGrid)
    cast_one_by_one();
  else
    cast(0, size_, extent);
  zox_Rays rays{};
  rays.planes = planes_.data();
  rays.nrays = static_cast<int32_t>(size_);
  rays.nsamples = counts_.data();
  reduce(rays, casting_.wanted, casting_.sampler.bricks ? &casting_.volume.bricks.middle : nullptr, reduced_);
  return reduced_;
}

}  // namespace render
