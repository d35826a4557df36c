#include "checks.h"
#include "operations/list.h"
#include "wrap.h"
#include "zox_volume.h"
#include "zox_volume_names.h"

#define ZOX_CHECK_MASK_None nullptr
#define ZOX_CHECK_MASK_Bits mask
#define ZOX_CHECK_MASK_Bytes mask
constexpr int kSamplesPerNone = 0, kSamplesPerBits = 8, kSamplesPerBytes = 1;

#define ZOX_CHECK_WRAP(name, Name, Element, Mask)                                                            \
  ZOX_CHECK_EXPORT int name(const zox_Rays* rays, ZOX_MASK_##Mask Element* maxima) {                         \
    static constexpr zox_check::Maximum maximum = {"zox_Volume_" #Name, sizeof(Element), kSamplesPer##Mask}; \
    zox_check::check_maximum(maximum, rays, ZOX_CHECK_MASK_##Mask, maxima);                                  \
    return ZOX_CHECK_NEXT(name)(rays, ZOX_MASK_ARGUMENTS_##Mask maxima);                                     \
  }

#define ZOX_CHECK_MAXIMUM(Name, name, Element, Mask)     \
  ZOX_CHECK_WRAP(zox_Volume_##Name, Name, Element, Mask) \
  ZOX_CHECK_WRAP(__zox_Volume_##Name, Name, Element, Mask)

ZOX_MAXIMA(ZOX_CHECK_MAXIMUM)

#define ZOX_CHECK_WINDOW_LEVEL(name, Source, Target)                                                    \
  ZOX_CHECK_EXPORT int name(const Source* src, Target* dst, int len, int center, int width, int outmin, \
                            int outmax) {                                                               \
    zox_check::check_window_level(src, dst, len);                                                       \
    return ZOX_CHECK_NEXT(name)(src, dst, len, center, width, outmin, outmax);                          \
  }

#define ZOX_CHECK_WINDOW_LEVELS(Name, name, Source, Target) \
  ZOX_CHECK_WINDOW_LEVEL(zox_Volume_##Name, Source, Target) \
  ZOX_CHECK_WINDOW_LEVEL(__zox_Volume_##Name, Source, Target)

ZOX_WINDOW_LEVELS(ZOX_CHECK_WINDOW_LEVELS)
