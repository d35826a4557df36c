#include "export.h"
#include "operations/table.h"

int zox_Volume_FindMaxCMask_8U(const zox_Rays* rays, const uint8_t* mask, int threshold, uint8_t* maxima) {
  return zox::pick().find_max_cmask_8u(rays, mask, threshold, maxima);
}

int zox_Volume_FindMaxCMask_16S(const zox_Rays* rays, const uint8_t* mask, int threshold, int16_t* maxima) {
  return zox::pick().find_max_cmask_16s(rays, mask, threshold, maxima);
}

ZOX_SECOND_NAME(zox_Volume_FindMaxCMask_8U);
ZOX_SECOND_NAME(zox_Volume_FindMaxCMask_16S);
