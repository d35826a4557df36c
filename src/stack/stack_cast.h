// Slice stacks: samples are gathered slice after slice, each slice visited once in ascending
// order however the rays cross the stack.
#pragma once

#include "stack/heap_block.h"
#include "stack/slice_cursors.h"
#include "stack/slice_lists.h"
#include "stack/stack_sampling.h"

namespace zox::ZOX_SET {
namespace {

// Tables up to this size stand on the stack.
constexpr int kStackEntries = ZOX_MAX_FIXED_SLICES;
static_assert(kStackEntries == ZOX_MAX_FIXED_REGIONS + 1);

inline int largest_count(const zox_Rays& batch) {
  int largest = batch.nsamples[0];
  for (int r = 1; r < batch.nrays; ++r) largest = batch.nsamples[r] > largest ? batch.nsamples[r] : largest;
  return largest;
}

// Slices in order by cursors; where these cannot tell it, by lists, which are on the stack if they fit.
template <SliceRules rules>
[[gnu::noinline]] bool stage_by_cursors(const Traces& traces, const Regions& regions, StackView& view,
                                        const StageSink& sink, int nslices) {
  RayCursors<rules> cursors(regions, traces);
  if (!cursors.start()) return false;
  SliceCursors<rules>(cursors, view, sink).sweep(nslices);
  return true;
}

template <SliceRules rules>
[[gnu::noinline]] void stage_by_lists(const Traces& traces, const Regions& regions, SliceLists lists,
                                      const StageSink& sink) {
  ListedSample on_stack[ZOX_MAX_STACK_SAMPLES * kLanes];
  if (!lists.samples) lists.samples = on_stack;
  lists.sort<rules>(traces, regions);
  lists.stage(traces, sink);
}

template <GeneralRules rules, class Reading = StageReading<fetch_rules(rules)>>
int cast_buckets(const zox_Rays& batch, int largest, const zox_Volume& volume) {
  constexpr bool grow = rules.tables == Tables::kGrow;
  const int nregions = volume.nregions, nslices = volume.nslices;
  int32_t bounds_on_stack[kStackEntries];
  uint32_t heads_on_stack[kStackEntries];
  HeapBlock bounds, heads, samples;
  if (grow && nregions > ZOX_MAX_FIXED_REGIONS && !bounds.take(wrap_mul(wrap_add(nregions, 1), 4)))
    return ZOX_STS_NO_MEMORY;
  if (grow && nslices > kStackEntries && !heads.take(wrap_mul(nslices, 4))) return ZOX_STS_NO_MEMORY;
  int sample_bytes = static_cast<int>(static_cast<uint32_t>(largest) << rules.listed_log2);
  if (largest > ZOX_MAX_STACK_SAMPLES && !samples.take(sample_bytes)) return ZOX_STS_NO_MEMORY;

  int32_t* Zb = bounds.as<int32_t>() ? bounds.as<int32_t>() : bounds_on_stack;
  for (int j = 0; j <= nregions; ++j) Zb[j] = to_fixed<rules.bounds>(volume.regbounds[j], 1 << rules.bits);
  const Regions regions{nregions, Zb, volume.regslice, volume.regscale};
  Traces traces;
  trace_rays<rules>(batch, nregions == 1, traces);
  StackSampler<fetch_rules(rules), Reading> sampler(volume, batch.planes);
  const StageSink sink = sampler.sink();
  if (!stage_by_cursors<slice_rules(rules)>(traces, regions, sampler.view, sink, nslices)) {
    uint32_t* head = heads.as<uint32_t>() ? heads.as<uint32_t>() : heads_on_stack;
    stage_by_lists<slice_rules(rules)>(traces, regions, {nslices, head, samples.as<ListedSample>()}, sink);
  }
  sampler.finish();
  return ZOX_STS_NO_ERROR;
}

template <GeneralRules rules>
int cast_general(const zox_Volume* volume, const zox_Rays* rays) {
  return cast_buckets<rules>(*rays, largest_count(*rays), *volume);
}

}  // namespace
}  // namespace zox::ZOX_SET
