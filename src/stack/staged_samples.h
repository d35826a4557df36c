// Samples on their way from the trace to the voxels: a short queue in the order in which the
// slices are to be read.
#pragma once

#include "numbers/lanes.h"

namespace zox::ZOX_SET {
namespace {

constexpr int kStage = 256;
constexpr int kStageRoom = kStage + 16;  // appending stores whole vectors

struct StagedSamples {
  alignas(64) int x[kStageRoom];         // fixed point
  alignas(64) int y[kStageRoom];         // fixed point
  alignas(64) int position[kStageRoom];  // trilinear: in slices from the region's first, fixed point
  alignas(64) int slice[kStageRoom];
  alignas(64) int node[kStageRoom];  // r + 64 k
  int n = 0;

  // Whether a vector more would find no room.
  static bool full(int n) { return n > kStage - 16; }

  // Moves samples first .. end - 1 to the front.
  void drop_first(int first, int end) {
    for (int i = first; i < end; ++i) {
      x[i - first] = x[i];
      y[i - first] = y[i];
      position[i - first] = position[i];
      slice[i - first] = slice[i];
      node[i - first] = node[i];
    }
  }

  // Repeats a sample behind the last, so that whole vectors hold samples only.
  void pad() {
    for (int i = n; i < padded(n); ++i) {
      x[i] = x[0];
      y[i] = y[0];
      slice[i] = slice[0];
    }
  }
};

struct Range {
  int low, high;
};

// Of the first n numbers, a multiple of 16.
inline Range range_of(const int* number, int n) {
  Range range = {INT32_MAX, INT32_MIN};
  for (int i = 0; i < n; ++i) {
    range.low = number[i] < range.low ? number[i] : range.low;
    range.high = number[i] > range.high ? number[i] : range.high;
  }
  return range;
}

}  // namespace
}  // namespace zox::ZOX_SET
