// A batch whose scratch memory is known: what an operation must ask for, and what it must write.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "operation_list.h"
#include "small_batch.h"
#include "small_volumes.h"

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

  // Into fresh planes; nothing but samples may be written.
  int run(const std::function<int(const zox_Volume*, const zox_Rays*)>& cast) {
    return batch_.run(cast, volume_);
  }
  bool planes_untouched() const { return !batch_.anything_written(); }
  bool planes_right() const;

 private:
  Stack stack_;
  Batch batch_;
  zox_Volume volume_;
  int nrays_;
  int value_;  // of every sample
};

}  // namespace zox_test
