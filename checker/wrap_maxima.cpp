#include "checks.h"
#include "wrap.h"
#include "zox_volume.h"
#include "zox_volume_names.h"

using zox_check::Maximum;

#define ZOX_CHECK_MAXIMA(prefix, type, Element)                                                          \
  ZOX_CHECK_EXPORT int prefix##zox_Volume_FindMax_##type(const zox_Rays* rays, Element* maxima) {        \
    static constexpr Maximum maximum = {"zox_Volume_FindMax_" #type, sizeof(Element), 0};                \
    zox_check::check_maximum(maximum, rays, nullptr, maxima);                                            \
    return ZOX_CHECK_NEXT(prefix##zox_Volume_FindMax_##type)(rays, maxima);                              \
  }                                                                                                      \
  ZOX_CHECK_EXPORT int prefix##zox_Volume_FindMaxBMask_##type(const zox_Rays* rays, const uint8_t* mask, \
                                                              Element* maxima) {                         \
    static constexpr Maximum maximum = {"zox_Volume_FindMaxBMask_" #type, sizeof(Element), 8};           \
    zox_check::check_maximum(maximum, rays, mask, maxima);                                               \
    return ZOX_CHECK_NEXT(prefix##zox_Volume_FindMaxBMask_##type)(rays, mask, maxima);                   \
  }                                                                                                      \
  ZOX_CHECK_EXPORT int prefix##zox_Volume_FindMaxCMask_##type(const zox_Rays* rays, const uint8_t* mask, \
                                                              int threshold, Element* maxima) {          \
    static constexpr Maximum maximum = {"zox_Volume_FindMaxCMask_" #type, sizeof(Element), 1};           \
    zox_check::check_maximum(maximum, rays, mask, maxima);                                               \
    return ZOX_CHECK_NEXT(prefix##zox_Volume_FindMaxCMask_##type)(rays, mask, threshold, maxima);        \
  }

ZOX_CHECK_MAXIMA(, 8U, uint8_t)
ZOX_CHECK_MAXIMA(, 16S, int16_t)
ZOX_CHECK_MAXIMA(__, 8U, uint8_t)
ZOX_CHECK_MAXIMA(__, 16S, int16_t)

#define ZOX_CHECK_WINDOW_LEVEL(name)                                                                      \
  ZOX_CHECK_EXPORT int name(const int16_t* src, uint8_t* dst, int len, int center, int width, int outmin, \
                            int outmax) {                                                                 \
    zox_check::check_window_level(src, dst, len);                                                         \
    return ZOX_CHECK_NEXT(name)(src, dst, len, center, width, outmin, outmax);                            \
  }

ZOX_CHECK_WINDOW_LEVEL(zox_Volume_WindowLevel_16S_8U)
ZOX_CHECK_WINDOW_LEVEL(__zox_Volume_WindowLevel_16S_8U)
