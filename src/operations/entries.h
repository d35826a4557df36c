// The exported functions of rows of the list: each forwards to the set that this processor runs.
#pragma once

#include "export.h"
#include "operations/list.h"
#include "operations/table.h"

#define ZOX_CASTER_ENTRY(Name, name, ...)                                         \
  int zox_Volume_RayCast_##Name(const zox_Volume* volume, const zox_Rays* rays) { \
    return zox::pick().name(volume, rays);                                        \
  }                                                                               \
  ZOX_SECOND_NAME(zox_Volume_RayCast_##Name);

#define ZOX_MAXIMUM_ENTRY(Name, name, Element, Mask)                             \
  int zox_Volume_##Name(const zox_Rays* rays, ZOX_MASK_##Mask Element* maxima) { \
    return zox::pick().name(rays, ZOX_MASK_ARGUMENTS_##Mask maxima);             \
  }                                                                              \
  ZOX_SECOND_NAME(zox_Volume_##Name);

#define ZOX_WINDOW_LEVEL_ENTRY(Name, name, Source, Target)                                          \
  int zox_Volume_##Name(const Source* src, Target* dst, int len, int center, int width, int outmin, \
                        int outmax) {                                                               \
    return zox::pick().name(src, dst, len, center, width, outmin, outmax);                          \
  }                                                                                                 \
  ZOX_SECOND_NAME(zox_Volume_##Name);
