/* A program that knows nothing of the checker but its optional header: run with and without it. */
#include <stdio.h>

#include "zox_volume.h"
#include "zox_volume_check.h"

static unsigned char voxels[64 * 64 * 32];

int main(void) {
  const zox_Volume volume = {.data = voxels, .size = 64};
  const double start[3] = {10, 10, 9};
  const double step[3] = {0, 0, -1};
  const double* starts[] = {start};
  const double* steps[] = {step};
  unsigned char samples[10];
  void* planes[10];
  const int32_t count = 10;
  for (int k = 0; k < 10; ++k) planes[k] = &samples[k];
  const zox_Rays rays = {planes, 1, starts, steps, &count};

  /* Less than there is, so that the checker speaks where the call itself is harmless. */
  if (zox_check_blocked) zox_check_blocked(voxels, 9);
  puts(zox_check_blocked ? "with checker" : "without checker");
  fflush(stdout);
  return zox_Volume_RayCast_Blocked_Divergent_Nearest_8U(&volume, &rays);
}
