// THE list: a row an operation. Whatever exists once an operation is made from it: the table's type, the
// sets' tables, the exported functions, the checker's wrappers, the lists of tests, fuzzers and
// benchmarks. Written out elsewhere only for readers (the public headers) and, to be independent, in
// tests/reference and tests/abi/operations.txt. Preprocessor alone, so that C can read it too.
#pragma once

// A ray caster is row(Name, name, rules, Layout, Projection, Sampling, Voxel): what follows
// zox_Volume_RayCast_ in the exported name; the member of the sets' tables; the row of rules.h; and what
// the words of the name say. A family of them is one unit of the library, the bits two.
// clang-format off
#define ZOX_CASTERS_BDN(row) \
  row(Blocked_Divergent_Nearest_8U, blocked_divergent_nearest_8u, kBlockedDivergentNearest8U, Blocked, Divergent, Nearest, 8U) \
  row(Blocked_Divergent_Nearest_16S, blocked_divergent_nearest_16s, kBlockedDivergentNearest16S, Blocked, Divergent, Nearest, 16S)

#define ZOX_CASTERS_BDT(row) \
  row(Blocked_Divergent_Trilinear_8U, blocked_divergent_trilinear_8u, kBlockedDivergentTrilinear8U, Blocked, Divergent, Trilinear, 8U) \
  row(Blocked_Divergent_Trilinear_16S, blocked_divergent_trilinear_16s, kBlockedDivergentTrilinear16S, Blocked, Divergent, Trilinear, 16S)

#define ZOX_CASTERS_BPN(row) \
  row(Blocked_Parallel_Nearest_8U, blocked_parallel_nearest_8u, kBlockedParallelNearest8U, Blocked, Parallel, Nearest, 8U) \
  row(Blocked_Parallel_Nearest_16S, blocked_parallel_nearest_16s, kBlockedParallelNearest16S, Blocked, Parallel, Nearest, 16S)

#define ZOX_CASTERS_BPT(row) \
  row(Blocked_Parallel_Trilinear_8U, blocked_parallel_trilinear_8u, kBlockedParallelTrilinear8U, Blocked, Parallel, Trilinear, 8U) \
  row(Blocked_Parallel_Trilinear_16S, blocked_parallel_trilinear_16s, kBlockedParallelTrilinear16S, Blocked, Parallel, Trilinear, 16S)

#define ZOX_CASTERS_GDN(row) \
  row(General_Divergent_Nearest_8U, general_divergent_nearest_8u, kDivergentNearest8U, General, Divergent, Nearest, 8U) \
  row(General_Divergent_Nearest_16S, general_divergent_nearest_16s, kDivergentNearest16S, General, Divergent, Nearest, 16S)

#define ZOX_CASTERS_GD_BIT(row) \
  row(General_Divergent_Nearest_Bit_8U, general_divergent_nearest_bit_8u, kDivergentNearestBit, General, Divergent, Nearest, Bit)

#define ZOX_CASTERS_GDT(row) \
  row(General_Divergent_Trilinear_8U, general_divergent_trilinear_8u, kDivergentTrilinear8U, General, Divergent, Trilinear, 8U) \
  row(General_Divergent_Trilinear_16S, general_divergent_trilinear_16s, kDivergentTrilinear16S, General, Divergent, Trilinear, 16S)

#define ZOX_CASTERS_GPN(row) \
  row(General_Parallel_Nearest_8U, general_parallel_nearest_8u, kParallelNearest8U, General, Parallel, Nearest, 8U) \
  row(General_Parallel_Nearest_16S, general_parallel_nearest_16s, kParallelNearest16S, General, Parallel, Nearest, 16S)

#define ZOX_CASTERS_GP_BIT(row) \
  row(General_Parallel_Nearest_Bit_8U, general_parallel_nearest_bit_8u, kParallelNearestBit, General, Parallel, Nearest, Bit)

#define ZOX_CASTERS_GPT(row) \
  row(General_Parallel_Trilinear_8U, general_parallel_trilinear_8u, kParallelTrilinear8U, General, Parallel, Trilinear, 8U) \
  row(General_Parallel_Trilinear_16S, general_parallel_trilinear_16s, kParallelTrilinear16S, General, Parallel, Trilinear, 16S)

#define ZOX_BLOCKED_CASTERS(row) \
  ZOX_CASTERS_BDN(row) ZOX_CASTERS_BDT(row) ZOX_CASTERS_BPN(row) ZOX_CASTERS_BPT(row)

#define ZOX_GENERAL_CASTERS(row) \
  ZOX_CASTERS_GDN(row) ZOX_CASTERS_GD_BIT(row) ZOX_CASTERS_GDT(row) \
  ZOX_CASTERS_GPN(row) ZOX_CASTERS_GP_BIT(row) ZOX_CASTERS_GPT(row)

#define ZOX_CASTERS(row) ZOX_BLOCKED_CASTERS(row) ZOX_GENERAL_CASTERS(row)

// A maximum is row(Name, name, Element, Mask): what follows zox_Volume_, the member, the sample, and
// what selects samples: ZOX_MASK_... are the parameters for it, between the batch and the maxima.
#define ZOX_MAXIMA_PLAIN(row) \
  row(FindMax_8U, find_max_8u, uint8_t, None) \
  row(FindMax_16S, find_max_16s, int16_t, None)

#define ZOX_MAXIMA_BIT_MASK(row) \
  row(FindMaxBMask_8U, find_max_bmask_8u, uint8_t, Bits) \
  row(FindMaxBMask_16S, find_max_bmask_16s, int16_t, Bits)

#define ZOX_MAXIMA_BYTE_MASK(row) \
  row(FindMaxCMask_8U, find_max_cmask_8u, uint8_t, Bytes) \
  row(FindMaxCMask_16S, find_max_cmask_16s, int16_t, Bytes)

#define ZOX_MAXIMA(row) ZOX_MAXIMA_PLAIN(row) ZOX_MAXIMA_BIT_MASK(row) ZOX_MAXIMA_BYTE_MASK(row)

#define ZOX_MASK_None
#define ZOX_MASK_Bits const uint8_t* mask,
#define ZOX_MASK_Bytes const uint8_t* mask, int threshold,
#define ZOX_MASK_ARGUMENTS_None
#define ZOX_MASK_ARGUMENTS_Bits mask,
#define ZOX_MASK_ARGUMENTS_Bytes mask, threshold,

// A display mapping is row(Name, name, Source, Target).
#define ZOX_WINDOW_LEVELS(row) \
  row(WindowLevel_16S_8U, window_level_16s_8u, int16_t, uint8_t)
// clang-format on
