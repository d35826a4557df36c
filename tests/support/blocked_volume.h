// Blocked volumes for random batches, kept from batch to batch since they are large.
#pragma once

#include "guarded_buffer.h"
#include "operation_list.h"
#include "rays.h"

namespace zox_test {

// The columns and rows that a blocked volume of this size has room for.
inline int blocked_edge(int size) {
  int edge = 64;
  while (edge * 2 <= size) edge *= 2;
  return edge;
}

struct BlockedVolume {
  const GuardedBuffer* buffer;
  int32_t size;  // as the record has it
  int edge;      // voxels in x and in y
  int depth;     // voxels in z
  // Too large to fill: all zero but for the voxels that fill_cell() writes. The next batch on such
  // a volume clears it.
  bool sparse;
};

BlockedVolume draw_blocked_volume(const Caster& caster, Random& random);

// Writes the eight voxels from (x, y, z) upwards, as far as the volume goes.
void fill_cell(const BlockedVolume& volume, const Voxel& at, int element_size, Contents contents,
               Random& random);

}  // namespace zox_test
