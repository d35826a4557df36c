#include "export.h"
#include "operations/table.h"

int zox_Volume_FindMaxBMask_8U(const zox_Rays* rays, const uint8_t* mask, uint8_t* maxima) {
  return zox::pick().find_max_bmask_8u(rays, mask, maxima);
}

int zox_Volume_FindMaxBMask_16S(const zox_Rays* rays, const uint8_t* mask, int16_t* maxima) {
  return zox::pick().find_max_bmask_16s(rays, mask, maxima);
}

ZOX_SECOND_NAME(zox_Volume_FindMaxBMask_8U);
ZOX_SECOND_NAME(zox_Volume_FindMaxBMask_16S);
