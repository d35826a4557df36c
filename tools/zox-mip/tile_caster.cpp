#include "tile_caster.h"

#include <algorithm>

namespace zox_mip {
namespace {

// Elements from plane to plane. 64 would do; a multiple of a large power of two would put the samples
// of a ray into few sets of the cache.
constexpr size_t kPlanePitch = 80;

// The parallel nearest operations keep their slice lists in tables of this length.
static_assert(ZOX_MAX_FIXED_SLICES == 512);

struct Family {
  CastOperation nearest_bytes, nearest_shorts, trilinear_bytes, trilinear_shorts;
};

constexpr Family kBlockedDivergent = {
    zox_Volume_RayCast_Blocked_Divergent_Nearest_8U, zox_Volume_RayCast_Blocked_Divergent_Nearest_16S,
    zox_Volume_RayCast_Blocked_Divergent_Trilinear_8U, zox_Volume_RayCast_Blocked_Divergent_Trilinear_16S};
constexpr Family kBlockedParallel = {
    zox_Volume_RayCast_Blocked_Parallel_Nearest_8U, zox_Volume_RayCast_Blocked_Parallel_Nearest_16S,
    zox_Volume_RayCast_Blocked_Parallel_Trilinear_8U, zox_Volume_RayCast_Blocked_Parallel_Trilinear_16S};
constexpr Family kGeneralDivergent = {
    zox_Volume_RayCast_General_Divergent_Nearest_8U, zox_Volume_RayCast_General_Divergent_Nearest_16S,
    zox_Volume_RayCast_General_Divergent_Trilinear_8U, zox_Volume_RayCast_General_Divergent_Trilinear_16S};
constexpr Family kGeneralParallel = {
    zox_Volume_RayCast_General_Parallel_Nearest_8U, zox_Volume_RayCast_General_Parallel_Nearest_16S,
    zox_Volume_RayCast_General_Parallel_Trilinear_8U, zox_Volume_RayCast_General_Parallel_Trilinear_16S};

}  // namespace

CastOperation cast_operation(Layout layout, Projection projection, Interpolation interpolation,
                             VoxelType type, int slices) {
  const bool nearest = interpolation == Interpolation::kNearest;
  const bool beyond_tables = layout == Layout::kStack && nearest && slices > ZOX_MAX_FIXED_SLICES;
  const bool parallel = projection == Projection::kOrthographic && !beyond_tables;
  const Family& family = layout == Layout::kBlocked ? (parallel ? kBlockedParallel : kBlockedDivergent)
                                                    : (parallel ? kGeneralParallel : kGeneralDivergent);
  if (type == VoxelType::kBytes) return nearest ? family.nearest_bytes : family.trilinear_bytes;
  return nearest ? family.nearest_shorts : family.trilinear_shorts;
}

bool DepthMask::admits_any(const Stretch& stretch) const {
  if (selected.empty()) return true;
  const auto begin = selected.begin() + (stretch.first - first);
  return std::find(begin, begin + stretch.count, 1) != begin + stretch.count;
}

TileCaster::TileCaster(const zox_Volume& volume, VoxelType type, CastOperation cast, const DepthMask& mask,
                       int max_samples)
    : volume_(volume), type_(type), cast_(cast), mask_(mask) {
  const size_t planes = static_cast<size_t>(max_samples);
  const size_t plane_bytes = kPlanePitch * voxel_bytes(type);
  samples_.resize(planes * plane_bytes);
  for (size_t k = 0; k < planes; ++k) planes_.push_back(samples_.data() + k * plane_bytes);
  single_ray_planes_.resize(mask.selected.empty() ? 0 : planes);
  for (size_t r = 0; r < kTileRays; ++r) {
    start_pointers_[r] = starts_[r].at.data();
    step_pointers_[r] = steps_[r].at.data();
  }
}

void TileCaster::add(const Vec3& middle, const Vec3& step, const Stretch& stretch, int16_t* maximum) {
  const size_t r = static_cast<size_t>(count_++);
  starts_[r] = middle + step * stretch.first;
  steps_[r] = step;
  nsamples_[r] = stretch.count;
  first_[r] = stretch.first;
  targets_[r] = maximum;
}

int TileCaster::run() {
  if (count_ == 0) return ZOX_STS_NO_ERROR;
  zox_Rays rays{};
  rays.planes = planes_.data();
  rays.nrays = count_;
  rays.starts = start_pointers_.data();
  rays.steps = step_pointers_.data();
  rays.nsamples = nsamples_.data();
  if (const int status = cast_(&volume_, &rays); status != ZOX_STS_NO_ERROR) return status;
  std::array<int16_t, kTileRays> maxima;
  if (mask_.selected.empty())
    reduce(rays, nullptr, maxima.data());
  else
    reduce_masked(rays, maxima.data());
  for (size_t r = 0; r < static_cast<size_t>(count_); ++r) *targets_[r] = maxima[r];
  return ZOX_STS_NO_ERROR;
}

void TileCaster::reduce(const zox_Rays& rays, const uint8_t* mask, int16_t* maxima) const {
  if (type_ == VoxelType::kShorts) {
    mask ? zox_Volume_FindMaxCMask_16S(&rays, mask, 0, maxima) : zox_Volume_FindMax_16S(&rays, maxima);
    return;
  }
  std::array<uint8_t, kTileRays> bytes;
  mask ? zox_Volume_FindMaxCMask_8U(&rays, mask, 0, bytes.data())
       : zox_Volume_FindMax_8U(&rays, bytes.data());
  for (int r = 0; r < rays.nrays; ++r) maxima[r] = bytes[static_cast<size_t>(r)];
}

// A mask speaks of sample numbers within the batch, but each ray enters the volume at a depth of its
// own: so every ray is reduced by itself, with the mask shifted to its first sample.
void TileCaster::reduce_masked(const zox_Rays& rays, int16_t* maxima) {
  for (int r = 0; r < rays.nrays; ++r) {
    const size_t ray = static_cast<size_t>(r);
    for (size_t k = 0; k < static_cast<size_t>(nsamples_[ray]); ++k)
      single_ray_planes_[k] = static_cast<std::byte*>(planes_[k]) + ray * voxel_bytes(type_);
    zox_Rays single{};
    single.planes = single_ray_planes_.data();
    single.nrays = 1;
    single.nsamples = &nsamples_[ray];
    reduce(single, mask_.selected.data() + (first_[ray] - mask_.first), maxima + r);
  }
}

}  // namespace zox_mip
