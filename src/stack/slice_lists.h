// Samples sorted into one list a slice: the plain way, for any volume and any rays.
#pragma once

#include <string.h>

#include "stack/stack_view.h"

namespace zox::ZOX_SET {
namespace {

// A sample on the list of its slice, in the place of its lane's number.
struct ListedSample {
  uint32_t next;
  int position;  // in slices from the region's first
};

struct SliceLists {
  static constexpr uint32_t kEnd = 0xFFFFFFFF;

  // A sample whose slice is not one of the volume's enters no list and is left unwritten.
  template <SliceRules rules>
  void sort(const Traces& traces, const Regions& regions) {
    if (nslices > 0) memset(heads, 0xFF, sizeof *heads * static_cast<size_t>(nslices));
    for (int lane = 0; lane < traces.n; ++lane) {
      RegionWalk walk(regions, traces.z[lane], traces.sz[lane]);
      for (int k = 0; k < traces.count[lane]; ++k, walk.advance()) {
        walk.enter_region();
        int s = slice_of<rules>(walk.position(), walk.first_slice());
        if (s < 0 || s >= nslices) continue;
        uint32_t sample = static_cast<uint32_t>(sample_number(lane, k));
        samples[sample] = {heads[s], walk.position()};
        heads[s] = sample;
      }
    }
  }

  // Each slice once, in ascending order.
  void stage(const Traces& traces, const StageSink& sink) const {
    StagedSamples* to = sink.take(false);
    for (int s = 0; s < nslices; ++s) {
      for (uint32_t sample = heads[s]; sample != kEnd; sample = samples[sample].next) {
        int lane = ray_of(static_cast<int>(sample)), k = plane_of(static_cast<int>(sample)), n = to->n++;
        to->x[n] = wrap_add(traces.x[lane], wrap_mul(k, traces.sx[lane]));
        to->y[n] = wrap_add(traces.y[lane], wrap_mul(k, traces.sy[lane]));
        to->position[n] = samples[sample].position;
        to->place[n] = s;
        to->number[n] = sample_number(traces.ray[lane], k);
        if (StagedSamples::full(to->n)) to = sink.take(false);
      }
    }
  }

  int nslices;
  uint32_t* heads;
  ListedSample* samples;
};

}  // namespace
}  // namespace zox::ZOX_SET
