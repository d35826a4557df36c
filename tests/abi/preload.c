// Every General caster reaches the allocator through __zox_Malloc and __zox_Free, also inside the
// library: it succeeds with the library's own, and returns status 2 with nothing written under a
// preloaded pair that always fails. Usage: preload STATUS
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "operations/list.h"
#include "zox_volume.h"

typedef int (*RayCast)(const zox_Volume*, const zox_Rays*);

#define ROW(Name, ...) zox_Volume_RayCast_##Name,
static const RayCast kGeneral[] = {ZOX_GENERAL_CASTERS(ROW)};

enum { kSamples = ZOX_MAX_STACK_SAMPLES + 1, kUntouched = 0x55 };

// One ray whose samples all lie at voxel (0, 0) of slice 0 in a stack of two regions of zeros: one
// sample more than the stack's share, so that the node store must be allocated.
static int cast(RayCast operation, unsigned char planes[kSamples][2]) {
  static const char zeros[16];
  const void* slices[] = {zeros, zeros, zeros};
  const int32_t rowoffs[] = {0, 4};
  const int32_t regslice[] = {0, 1};
  const double regbounds[] = {0, 1, 2};
  const double regscale[] = {1, 1};
  zox_Volume volume = {.slices = slices, .rowoffs = rowoffs, .nslices = 2, .nregions = 2};
  volume.regslice = regslice;
  volume.regbounds = regbounds;
  volume.regscale = regscale;

  const double origin[] = {0, 0, 0};
  const double* points[] = {origin};
  const int32_t nsamples[] = {kSamples};
  void* rows[kSamples];
  for (int k = 0; k < kSamples; ++k) rows[k] = planes[k];
  const zox_Rays rays = {rows, 1, points, points, nsamples};
  return operation(&volume, &rays);
}

int main(int argc, char** argv) {
  if (argc != 2) return EXIT_FAILURE;
  int expected = atoi(argv[1]);
  int failed = 0;
  for (size_t i = 0; i < sizeof kGeneral / sizeof kGeneral[0]; ++i) {
    static unsigned char planes[kSamples][2];
    memset(planes, kUntouched, sizeof planes);
    int status = cast(kGeneral[i], planes);
    int written = 0;
    for (int k = 0; k < kSamples; ++k) written += planes[k][0] != kUntouched;
    if (status != expected || written != (status == ZOX_STS_NO_ERROR ? kSamples : 0)) {
      printf("General caster %zu: status %d, %d samples written\n", i, status, written);
      failed = 1;
    }
  }
  return failed;
}
