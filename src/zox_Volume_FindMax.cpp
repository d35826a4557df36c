#include "export.h"
#include "operations/table.h"

int zox_Volume_FindMax_8U(const zox_Rays* rays, uint8_t* maxima) {
  return zox::pick().find_max_8u(rays, maxima);
}

int zox_Volume_FindMax_16S(const zox_Rays* rays, int16_t* maxima) {
  return zox::pick().find_max_16s(rays, maxima);
}

ZOX_SECOND_NAME(zox_Volume_FindMax_8U);
ZOX_SECOND_NAME(zox_Volume_FindMax_16S);
