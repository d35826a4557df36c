#include "scratch_case.h"

#include <algorithm>
#include <cmath>

namespace zox_test {
namespace {

constexpr double kStart[3] = {1.0, 1.0, 0.5};
constexpr double kStep[3] = {0.0, 0.0, 0.0};
constexpr int kEdge = 4;

// One byte everywhere in the slice. 8-bit samples are this byte and 16-bit ones twice it; as bits
// it holds a one at column 1, where all rays stand.
constexpr uint8_t kVoxelByte = 0x47;
constexpr uint8_t kUntouched = 0xA5;

int32_t wrapped(int64_t product) { return static_cast<int32_t>(static_cast<uint64_t>(product)); }

}  // namespace

std::vector<int32_t> scratch_requests(const Caster& caster, const ScratchSize& size) {
  std::vector<int32_t> requests;
  if (caster.blocked()) return requests;
  const bool parallel_nearest = caster.parallel() && !caster.trilinear();
  // All rays start on one z, so one region of any depth takes the path without lists.
  if (parallel_nearest && (size.nrays < 1 || size.nregions == 1)) return requests;
  if (!caster.fixed_tables() && size.nregions > 511)
    requests.push_back(wrapped(4 * (int64_t{size.nregions} + 1)));
  if (!caster.fixed_tables() && size.nslices > 512) requests.push_back(wrapped(4 * int64_t{size.nslices}));
  const int64_t bytes_a_sample = caster.trilinear() ? 1024 : 512;
  if (size.samples > 512) requests.push_back(wrapped(size.samples * bytes_a_sample));
  return requests;
}

std::vector<ScratchSize> scratch_sizes(const Caster& caster) {
  std::vector<ScratchSize> sizes;
  for (const int nregions : {1, 2, 511, 512, 600}) {
    for (const int nslices : {1, 512, 513, 700}) {
      for (const int samples : {0, 1, 512, 513, 600}) {
        if (caster.fixed_tables() && (nregions > 511 || nslices > 512)) continue;
        sizes.push_back({nregions, nslices, samples});
      }
    }
  }
  return sizes;
}

std::string to_string(const Caster& caster, const ScratchSize& size) {
  return std::string(caster.name) + ", regions " + std::to_string(size.nregions) + ", slices " +
         std::to_string(size.nslices) + ", samples " + std::to_string(size.samples) + ", rays " +
         std::to_string(size.nrays);
}

ScratchCase::ScratchCase(const Caster& caster, const ScratchSize& size)
    : caster_(caster), slice_(kEdge * kEdge * 2, kVoxelByte) {
  // Sizes beyond these are refused before anything is read.
  const size_t slices = static_cast<size_t>(std::min(size.nslices, 1000));
  const size_t regions = static_cast<size_t>(std::min(size.nregions, 1000));
  slices_.assign(slices + 1, slice_.data());
  for (int y = 0; y < kEdge; ++y) rowoffs_.push_back(y * kEdge * 2);
  // Scale 0 puts every z of every region on that region's first slice, which is 0.
  regslice_.assign(regions, 0);
  scales_.assign(regions, 0.0);
  for (size_t j = 0; j <= regions; ++j) bounds_.push_back(static_cast<double>(j));
  counts_ = {1, size.samples};
  if (size.nrays < 2) counts_ = {size.samples};
  starts_.assign(counts_.size(), kStart);
  steps_.assign(counts_.size(), kStep);
  const size_t planes = size.nrays < 1 ? 0 : static_cast<size_t>(std::max(1, std::min(size.samples, 1000)));
  planes_.assign(planes, std::vector<uint8_t>(counts_.size() * static_cast<size_t>(caster.element_size())));
  for (std::vector<uint8_t>& plane : planes_) plane_pointers_.push_back(plane.data());
  volume_.slices = slices_.data();
  volume_.rowoffs = rowoffs_.data();
  volume_.nslices = size.nslices;
  volume_.nregions = size.nregions;
  volume_.regslice = regslice_.data();
  volume_.regbounds = bounds_.data();
  volume_.regscale = scales_.data();
  rays_ = {plane_pointers_.data(), size.nrays, starts_.data(), steps_.data(), counts_.data()};
}

void ScratchCase::clear_planes() {
  for (std::vector<uint8_t>& plane : planes_) std::fill(plane.begin(), plane.end(), kUntouched);
}

bool ScratchCase::planes_untouched() const {
  return std::all_of(planes_.begin(), planes_.end(), [](const std::vector<uint8_t>& plane) {
    return std::all_of(plane.begin(), plane.end(), [](uint8_t b) { return b == kUntouched; });
  });
}

bool ScratchCase::planes_right() const {
  const size_t size = static_cast<size_t>(caster_.element_size());
  for (size_t k = 0; k < planes_.size(); ++k) {
    for (size_t i = 0; i < planes_[k].size(); ++i) {
      const bool sampled = static_cast<int>(k) < counts_[i / size];
      const uint8_t sample = caster_.bit() ? 1 : kVoxelByte;
      if (planes_[k][i] != (sampled ? sample : kUntouched)) return false;
    }
  }
  return true;
}

}  // namespace zox_test
