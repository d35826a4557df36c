// A batch whose scratch memory is known: what an operation must ask for, and what it must write.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "operation_list.h"

namespace zox_test {

struct ScratchSize {
  int nregions;
  int nslices;
  int samples;  // of the longest ray
  int nrays = 2;
};

// The sizes that the caster asks for, in order, by the documented rule: boundaries above 511
// regions, list heads above 512 slices, nodes above 512 samples; 32-bit products that may wrap.
std::vector<int32_t> scratch_requests(const Caster& caster, const ScratchSize& size);

// Every size worth trying on a caster, on both sides of each limit.
std::vector<ScratchSize> scratch_sizes(const Caster& caster);

std::string to_string(const Caster& caster, const ScratchSize& size);

// A stack in which every sample falls on one voxel, so that results are known by hand.
class ScratchCase {
 public:
  ScratchCase(const Caster& caster, const ScratchSize& size);

  const zox_Volume* volume() const { return &volume_; }
  const zox_Rays* rays() const { return &rays_; }
  void clear_planes();
  bool planes_untouched() const;
  bool planes_right() const;

 private:
  const Caster& caster_;
  std::vector<uint8_t> slice_;
  std::vector<const void*> slices_;
  std::vector<int32_t> rowoffs_, regslice_, counts_;
  std::vector<double> bounds_, scales_;
  std::vector<const double*> starts_, steps_;
  std::vector<std::vector<uint8_t>> planes_;
  std::vector<void*> plane_pointers_;
  zox_Volume volume_{};
  zox_Rays rays_{};
};

}  // namespace zox_test
