/* From a plain array to bricks and back, to a stack, and to the samples of a ray through it. Compiled as C11
 * here and as C++17 by layout_chain.cpp. */
#include "layout_chain.h"

#include <stdlib.h>
#include <zox_volume_layout.h>

#ifndef CHAIN
#define CHAIN layout_chain_in_c11
#endif

enum { kColumns = 70, kRows = 3, kLayers = 5 };

static int cast(zox_Volume* volume, const double* start, const double* step, int32_t count,
                int16_t* samples) {
  void* planes[64];
  zox_Rays rays;
  for (int k = 0; k < count; ++k) planes[k] = samples + k;
  rays.planes = planes;
  rays.nrays = 1;
  rays.starts = &start;
  rays.steps = &step;
  rays.nsamples = &count;
  return zox_Volume_RayCast_General_Divergent_Trilinear_16S(volume, &rays);
}

LayoutChain CHAIN(void) {
  static int16_t plain[kColumns * kRows * kLayers], back[kColumns * kRows * kLayers];
  const void* slices[kLayers + 1];
  int32_t rowoffs[kRows], regslice[kLayers], first;
  double regbounds[kLayers + 1], regscale[kLayers];
  /* Slices at 0, 2, 4, 10 and 16: two regions. */
  const double positions[kLayers] = {0, 2, 4, 10, 16}, step[3] = {0, 0, 1};
  double start[3] = {1, 1, -3};
  LayoutChain chain;
  zox_Volume volume;
  zox_SampleBox box;
  int16_t* blocked;
  for (int i = 0; i < kColumns * kRows * kLayers; ++i) plain[i] = (int16_t)(i / (kColumns * kRows) * 100);

  chain.size = zox_blocked_size(kColumns, kRows);
  chain.elements = zox_blocked_elements(chain.size, kLayers);
  chain.last = zox_blocked_index(chain.size, kColumns - 1, kRows - 1, kLayers - 1);
  blocked = (int16_t*)calloc(chain.elements, sizeof *blocked);
  if (!blocked) abort();
  zox_blocked_pack_16S(plain, kColumns, kRows, kLayers, kColumns, kColumns * kRows, blocked, chain.size, 0);
  zox_blocked_unpack_16S(blocked, chain.size, 0, back, kColumns, kRows, kLayers, kColumns, kColumns * kRows);
  chain.changed = 0;
  for (int i = 0; i < kColumns * kRows * kLayers; ++i) chain.changed += plain[i] != back[i];
  free(blocked);

  zox_stack_fill(&volume, plain, kRows, kLayers, kColumns * 2, kColumns * kRows * 2, slices, rowoffs);
  chain.regions = zox_stack_regions(&volume, positions, kLayers, 1e-6, regslice, regbounds, regscale);
  box = zox_stack_box(&volume, kColumns, kRows, 1);
  chain.count = zox_clip(&box, start, step, 64, &first);
  chain.first = first;
  start[2] += first * step[2];
  chain.status = cast(&volume, start, step, chain.count, chain.samples);
  return chain;
}
