// Samples on their way from the trace to the voxels: a short queue in the order in which the
// slices are to be read.
#pragma once

#include "core/lanes.h"

namespace zox::ZOX_SET {
namespace {

constexpr int kStage = 256;

struct StagedSamples {
  // Room for one vector more: appending stores whole vectors.
  alignas(64) int x[kStage + 16];         // fixed point
  alignas(64) int y[kStage + 16];         // fixed point
  alignas(64) int position[kStage + 16];  // in slices from the region's first, fixed point
  alignas(64) int slice[kStage + 16];
  alignas(64) int node[kStage + 16];  // r + 64 k
  int n = 0;

  bool full() const { return n > kStage - 8; }
};

}  // namespace
}  // namespace zox::ZOX_SET
