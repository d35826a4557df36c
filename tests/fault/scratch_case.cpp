#include "scratch_case.h"

#include <algorithm>
#include <numeric>

namespace zox_test {
namespace {

constexpr Point kStart = {1, 1, 0.5}, kStep = {0, 0, 0};
constexpr int kEdge = 4;

// One byte everywhere in the stack. 8-bit samples are this byte and 16-bit ones twice it; as bits
// it holds a one at column 1, where all rays stand.
constexpr uint8_t kVoxelByte = 0x47;

// Sizes beyond these are refused before anything is read.
int existing(int size) { return std::min(size, 1000); }

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
    : stack_(caster, kEdge, kEdge, existing(size.nslices)),
      batch_(caster.element_size()),
      nrays_(size.nrays),
      value_(caster.bit()                 ? 1
             : caster.element_size() == 2 ? 0x0101 * kVoxelByte
                                          : kVoxelByte) {
  stack_.fill_memory([](uint8_t* at, size_t bytes) { std::fill_n(at, bytes, kVoxelByte); });
  // Scale 0 puts every z of every region on that region's first slice, which is 0.
  const size_t regions = static_cast<size_t>(existing(size.nregions));
  std::vector<double> bounds(regions + 1);
  std::iota(bounds.begin(), bounds.end(), 0.0);
  stack_.regions(bounds, std::vector<int32_t>(regions), std::vector<double>(regions));
  volume_ = stack_.pretend(size.nslices).volume();
  volume_.nregions = size.nregions;
  if (nrays_ > 1) batch_.add(kStart, kStep, 1);
  batch_.add(kStart, kStep, size.samples).pretend(nrays_);
}

bool ScratchCase::planes_right() const {
  for (int r = 0; r < nrays_; ++r) {
    const std::vector<int> samples = batch_.samples(r);
    if (!std::all_of(samples.begin(), samples.end(), [&](int sample) { return sample == value_; }))
      return false;
  }
  return true;
}

}  // namespace zox_test
