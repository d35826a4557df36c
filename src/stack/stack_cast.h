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

// Lists on the stack where they fit.
template <GeneralRules rules>
[[gnu::noinline]] void sweep_with_stack_nodes(const zox_Volume& volume, const zox_Rays& batch,
                                              const Regions& regions, uint32_t* heads) {
  alignas(16) char nodes[ZOX_MAX_STACK_SAMPLES << rules.node_log2];
  sweep_lists<rules>(volume, batch, regions, heads, reinterpret_cast<SampleNode<rules>*>(nodes));
}

// Slices in order by cursors, values by vectors. False, with nothing written, if the volume's
// regions or a ray's z do not run one way.
template <GeneralRules rules>
bool sweep_cursors(const zox_Volume& volume, const zox_Rays& batch, const Regions& regions) {
  using Cursors = RayCursors<slice_rules(rules)>;
  if (!Cursors::regions_ascend(regions)) return false;
  Cursors cursors(regions);
  for (int r = 0; r < batch.nrays; ++r) {
    if (batch.nsamples[r] < 1) continue;  // its start may be anything
    Trace t = trace_of<rules>(batch, r, regions.n == 1);
    if (!cursors.add(t, r)) return false;
  }
  StackSampler<fetch_rules(rules)> sampler(volume, batch.planes);
  const StageSink sink = sampler.sink();
  SliceCursors<slice_rules(rules)>(cursors, sampler.view, sink).sweep(volume.nslices);
  sampler.finish();
  return true;
}

template <GeneralRules rules>
int cast_buckets(const zox_Rays& batch, int largest, const zox_Volume& volume) {
  int32_t bounds_on_stack[kStackEntries];
  uint32_t heads_on_stack[kStackEntries];
  HeapBlock bounds, heads, nodes;
  bool grow = rules.tables == Tables::kGrow;
  int nregions = volume.nregions, nslices = volume.nslices;
  if (grow && nregions > ZOX_MAX_FIXED_REGIONS && !bounds.take(wrap_mul(wrap_add(nregions, 1), 4)))
    return ZOX_STS_NO_MEMORY;
  if (grow && nslices > kStackEntries && !heads.take(wrap_mul(nslices, 4))) return ZOX_STS_NO_MEMORY;
  int node_bytes = static_cast<int>(static_cast<uint32_t>(largest) << rules.node_log2);
  if (largest > ZOX_MAX_STACK_SAMPLES && !nodes.take(node_bytes)) return ZOX_STS_NO_MEMORY;

  int32_t* Zb = bounds.as<int32_t>() ? bounds.as<int32_t>() : bounds_on_stack;
  uint32_t* head = heads.as<uint32_t>() ? heads.as<uint32_t>() : heads_on_stack;
  for (int j = 0; j <= nregions; ++j) Zb[j] = to_fixed<rules.bounds>(volume.regbounds[j], 1 << rules.bits);
  Regions regions{nregions, Zb, volume.regslice, volume.regscale};
  if (sweep_cursors<rules>(volume, batch, regions)) return ZOX_STS_NO_ERROR;
  if (nodes.as<char>()) {
    sweep_lists<rules>(volume, batch, regions, head, nodes.as<SampleNode<rules>>());
  } else {
    sweep_with_stack_nodes<rules>(volume, batch, regions, head);
  }
  return ZOX_STS_NO_ERROR;
}

template <GeneralRules rules>
int cast_general(const zox_Volume* volume, const zox_Rays* rays) {
  return cast_buckets<rules>(*rays, largest_count(*rays), *volume);
}

}  // namespace
}  // namespace zox::ZOX_SET
