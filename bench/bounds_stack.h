// Slice-stack kernels with parts of their work left out: other readings of the same stages.
#pragma once

#include "bounds_blocked.h"
#include "stack/stack_cast.h"

namespace zox::ZOX_SET {
namespace {

template <FetchRules rules>
struct NothingRead {
  static void ask(const StackView&, StagedSamples&) {}
  static void read(const StackView&, const StagedSamples& stage, void* const*) { use(stage); }
};

// Nearest: a sum of the voxels, no sample stored. Trilinear: the corners, nothing computed from them.
template <FetchRules rules>
struct VoxelsRead : StageReading<rules> {
  using Element = ElementOf<rules.voxel>;
  static void read(const StackView& view, const StagedSamples& stage, void* const*) {
    if constexpr (rules.trilinear) {
      for (int first = 0; first < stage.n; first += kLanes) {
        Corners<Element> corners;
        fetch_stack_corners<rules>(view, stage, first, stage.n - first < kLanes ? stage.n - first : kLanes,
                                   corners);
        use(corners);
      }
    } else {
      int sum = 0;
      for (int i = 0; i < stage.n; ++i) sum += load<Element>(view.origin + stage.place[i]);
      use(sum);
    }
  }
};

// Samples stored as whole() stores them, made from voxels that lie ready.
template <FetchRules rules>
struct SamplesStored : NothingRead<rules> {
  using Element = ElementOf<rules.voxel>;
  static void read(const StackView&, const StagedSamples& stage, void* const* planes) {
    if constexpr (rules.trilinear) {
      for (int first = 0; first < stage.n; first += kLanes) {
        Corners<Element> ready = {};
        use(ready);
        interpolate_block<rules>(ready, stage, first, stage.n - first < kLanes ? stage.n - first : kLanes,
                                 planes);
      }
    } else {
      Element voxel[kStageRoom];
      use(voxel);
      store_samples<Element>(stage.number, stage.n, planes, [&](int i) { return voxel[i]; });
    }
  }
};

template <GeneralRules rules, template <FetchRules> class Reading>
int cast_stack_part(const zox_Volume* volume, const zox_Rays* rays) {
  return cast_buckets<rules, Reading<fetch_rules(rules)>>(*rays, largest_count(*rays), *volume);
}

// A row of the list.
#define ZOX_STACK_BOUNDS(name, rules)                                                                     \
  {                                                                                                       \
#name, kOperations.name, cast_stack_part < rules, NothingRead>, cast_stack_part < rules, VoxelsRead>, \
        cast_stack_part < rules, SamplesStored>                                                           \
  }

}  // namespace
}  // namespace zox::ZOX_SET
