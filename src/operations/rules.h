// THE table: where the ray casters differ from one another, a row an operation. Each cell is
// meant as it stands, however odd it looks beside its neighbours. Plain data, for whoever needs it.
#pragma once

#include <stdint.h>

#include "numbers/rounding.h"
#include "operations/caster_words.h"

namespace zox {

enum class StepOf { kEachRay, kRay0 };
enum class Tables { kGrow, kFixed };     // beyond 512 entries: heap, or not allowed
enum class RowSum { k32Bits, k64Bits };  // row offset plus column: wraps in 32 bits, or not

constexpr Rounding kTrunc = Rounding::kTruncated;
constexpr Rounding kRound = Rounding::kRounded;

// Slice stacks, the operations that sort samples by slice.
struct GeneralRules {
  Voxel voxel;
  StepOf step_of;
  int bits;            // fraction bits of all positions
  int start_half;      // half voxels added to a start before scaling: 1 where x, y are nearest
  Rounding xy_start;   // x and y of the start
  Rounding step_one;   // x and y of the step, volumes of one region
  Rounding step_many;  // x and y of the step, volumes of several regions
  Rounding z;          // z of start and step
  Rounding bounds;     // region boundaries
  int slice_half;      // half slices added before flooring: 1 where the slice is nearest
  Tables tables;       // boundaries and list heads
  int listed_log2;     // bytes of scratch for one sample of each of 64 rays
  RowSum row_sum;
};

// Columns as in the struct.  The odd cells:
// - divergent nearest 8U, 16S round the step on one region and truncate it on several;
// - the bit operations and all parallel nearest ones truncate it always;
// - of the divergent trilinear pair only 8U rounds the boundaries;
// - byte offsets of 8-bit voxels and bits are sums in 32 bits, save in parallel trilinear.
// clang-format off
constexpr GeneralRules kDivergentNearest8U    {Voxel::k8U,  StepOf::kEachRay, 21, 1, kTrunc, kRound, kTrunc, kTrunc, kTrunc, 1, Tables::kGrow,   9, RowSum::k32Bits};
constexpr GeneralRules kDivergentNearest16S   {Voxel::k16S, StepOf::kEachRay, 21, 1, kTrunc, kRound, kTrunc, kTrunc, kTrunc, 1, Tables::kGrow,   9, RowSum::k64Bits};
constexpr GeneralRules kDivergentNearestBit   {Voxel::kBit, StepOf::kEachRay, 21, 1, kTrunc, kTrunc, kTrunc, kTrunc, kTrunc, 1, Tables::kFixed,  9, RowSum::k32Bits};
constexpr GeneralRules kDivergentTrilinear8U  {Voxel::k8U,  StepOf::kEachRay, 20, 0, kRound, kRound, kRound, kRound, kRound, 0, Tables::kGrow,  10, RowSum::k32Bits};
constexpr GeneralRules kDivergentTrilinear16S {Voxel::k16S, StepOf::kEachRay, 20, 0, kRound, kRound, kRound, kRound, kTrunc, 0, Tables::kGrow,  10, RowSum::k64Bits};
constexpr GeneralRules kParallelNearest8U     {Voxel::k8U,  StepOf::kRay0,    21, 1, kTrunc, kTrunc, kTrunc, kTrunc, kTrunc, 1, Tables::kFixed,  9, RowSum::k32Bits};
constexpr GeneralRules kParallelNearest16S    {Voxel::k16S, StepOf::kRay0,    21, 1, kTrunc, kTrunc, kTrunc, kTrunc, kTrunc, 1, Tables::kFixed,  9, RowSum::k64Bits};
constexpr GeneralRules kParallelNearestBit    {Voxel::kBit, StepOf::kRay0,    21, 1, kTrunc, kTrunc, kTrunc, kTrunc, kTrunc, 1, Tables::kFixed,  9, RowSum::k32Bits};
constexpr GeneralRules kParallelTrilinear8U   {Voxel::k8U,  StepOf::kRay0,    20, 0, kRound, kRound, kRound, kRound, kRound, 0, Tables::kGrow,  10, RowSum::k64Bits};
constexpr GeneralRules kParallelTrilinear16S  {Voxel::k16S, StepOf::kRay0,    20, 0, kRound, kRound, kRound, kRound, kRound, 0, Tables::kGrow,  10, RowSum::k64Bits};
// clang-format on

// What leads from a position to its slice: shared by all nearest and by all trilinear operations.
struct SliceRules {
  int bits, half;
};
constexpr SliceRules slice_rules(GeneralRules r) { return {r.bits, r.slice_half}; }

// What the voxels are read by, once samples are staged.
struct FetchRules {
  Voxel voxel;
  bool trilinear;
  bool index_in_16_bits;  // of column and row the low 16 bits count, unsigned
  RowSum row_sum;
  bool in_slice_order;
};
constexpr FetchRules fetch_rules(GeneralRules r) {
  bool nearest = r.slice_half == 1;
  return {r.voxel, !nearest, nearest, r.row_sum, true};
}

// Parallel nearest on one region keeps no lists: indices are signed, sums as wide as addresses, and
// samples come as the rays march.
constexpr FetchRules kOneRegion8U{Voxel::k8U, false, false, RowSum::k64Bits, false};
constexpr FetchRules kOneRegion16S{Voxel::k16S, false, false, RowSum::k64Bits, false};
constexpr FetchRules kOneRegionBit{Voxel::kBit, false, false, RowSum::k64Bits, false};

// Blocked volumes. Parallel batches of more rays than this are walked ray by ray, and no offsets kept.
constexpr int kMostSharedRays = 64;

enum class Positions {
  kFixed,  // 20 fraction bits in 32-bit integers
  kReal,   // doubles
};

struct BlockedRules {
  Voxel voxel;
  Sampling sampling;
  Positions positions;
  int start_half;  // half voxels added to a start: 1 where the voxel is nearest
  int x_weight;    // parallel only: voxels in x that count as one in z when the traversal is chosen
};

// The odd cells: parallel 8U counts x at 1/12 where 16S counts it at 1/6; of the parallel
// trilinear pair only 8U steps and interpolates in integers.
// clang-format off
constexpr BlockedRules kBlockedDivergentNearest8U    {Voxel::k8U,  Sampling::kNearest,   Positions::kFixed, 1,  0};
constexpr BlockedRules kBlockedDivergentNearest16S   {Voxel::k16S, Sampling::kNearest,   Positions::kFixed, 1,  0};
constexpr BlockedRules kBlockedDivergentTrilinear8U  {Voxel::k8U,  Sampling::kTrilinear, Positions::kReal,  0,  0};
constexpr BlockedRules kBlockedDivergentTrilinear16S {Voxel::k16S, Sampling::kTrilinear, Positions::kReal,  0,  0};
constexpr BlockedRules kBlockedParallelNearest8U     {Voxel::k8U,  Sampling::kNearest,   Positions::kReal,  1, 12};
constexpr BlockedRules kBlockedParallelNearest16S    {Voxel::k16S, Sampling::kNearest,   Positions::kReal,  1,  6};
constexpr BlockedRules kBlockedParallelTrilinear8U   {Voxel::k8U,  Sampling::kTrilinear, Positions::kFixed, 0, 12};
constexpr BlockedRules kBlockedParallelTrilinear16S  {Voxel::k16S, Sampling::kTrilinear, Positions::kReal,  0,  6};
// clang-format on

// The C type of a voxel and of the sample made from it; bits are read from, and written as, bytes.
template <Voxel voxel>
struct ElementType {
  using Type = uint8_t;
};
template <>
struct ElementType<Voxel::k16S> {
  using Type = int16_t;
};
template <Voxel voxel>
using ElementOf = typename ElementType<voxel>::Type;

}  // namespace zox
