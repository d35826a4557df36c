// Blocked volumes for random batches, kept from batch to batch since they are large.
#pragma once

#include "guarded_buffer.h"
#include "operation_list.h"

namespace zox_test {

struct BlockedVolume {
  const GuardedBuffer* buffer;
  int32_t size;  // as the record has it
  int edge;      // voxels in x and in y
  int depth;     // voxels in z
};

BlockedVolume draw_blocked_volume(const Caster& caster, Random& random);

}  // namespace zox_test
