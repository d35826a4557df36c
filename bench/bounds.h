// Kernels with parts of their work left out, for bench_bounds: what a family's time is made of.
#pragma once

#include "operations/table.h"

namespace bench {

// One operation of one instruction set. All walk the same rays and write as many samples, only whole()
// the right ones.
struct Bounds {
  const char* operation;
  zox::RayCast whole;
  zox::RayCast walk;        // positions, and where their voxels lie; none is read, no line asked for
  zox::RayCast loads;       // the walk, voxels read and put together, nothing computed from them
  zox::RayCast arithmetic;  // the walk, samples computed from voxels that lie ready
};

// Of a set's file, ended by a null operation.
extern const Bounds bounds_avx2[], bounds_avx512[];

}  // namespace bench
