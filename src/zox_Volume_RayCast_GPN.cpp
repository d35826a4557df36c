#include "export.h"
#include "operations/table.h"

int zox_Volume_RayCast_General_Parallel_Nearest_8U(const zox_Volume* volume, const zox_Rays* rays) {
  return zox::pick().general_parallel_nearest_8u(volume, rays);
}

int zox_Volume_RayCast_General_Parallel_Nearest_16S(const zox_Volume* volume, const zox_Rays* rays) {
  return zox::pick().general_parallel_nearest_16s(volume, rays);
}

ZOX_SECOND_NAME(zox_Volume_RayCast_General_Parallel_Nearest_8U);
ZOX_SECOND_NAME(zox_Volume_RayCast_General_Parallel_Nearest_16S);
