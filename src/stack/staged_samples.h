// Samples on their way from the trace to the voxels: a short queue in the order in which the
// slices are to be read.
#pragma once

#include "numbers/lanes.h"
#include "stack/sample_number.h"

namespace zox::ZOX_SET {
namespace {

// By scripts/bench.sh --before, kStage changed, --filter general_divergent --load cached,cold: 128 is 3 to 20
// % slower; 512 gains 4 % in trilinear sampling, loses as much or more in nearest, and takes twice the stack.
constexpr int kStage = 256;
constexpr int kStageRoom = kStage + 16;  // appending stores whole vectors

struct Range {
  int low = INT32_MAX, high = INT32_MIN;

  void include(int number) {
    low = number < low ? number : low;
    high = number > high ? number : high;
  }
  void include(Range other) {
    include(other.low);
    include(other.high);
  }
};

struct StagedSamples {
  alignas(64) int x[kStageRoom];         // fixed point
  alignas(64) int y[kStageRoom];         // fixed point
  alignas(64) int position[kStageRoom];  // trilinear: in slices from the region's first, fixed point
  alignas(64) int place[kStageRoom];     // evenly apart: the voxel's offset, in bytes; else its slice
  alignas(64) int number[kStageRoom];    // of sample_number.h
  const void* address[kStageRoom];       // nearest and not evenly apart: set when the stage is full
  int n = 0;
  bool even = false;  // then y, and x of nearest samples but for bits, are not set

  // Whether a vector more would find no room.
  static bool full(int n) { return n > kStage - 16; }
};

inline Range range_of(const int* number, int n) {
  Range range;
  for (int i = 0; i < n; ++i) range.include(number[i]);
  return range;
}

}  // namespace
}  // namespace zox::ZOX_SET
