#include "checks.h"
#include "operations/list.h"
#include "wrap.h"
#include "zox_volume.h"
#include "zox_volume_names.h"

#define ZOX_CHECK_WRAP(name, Name, rules, ...)                                                            \
  ZOX_CHECK_EXPORT int name(const zox_Volume* volume, const zox_Rays* rays) {                             \
    static constexpr zox_check::Caster caster("zox_Volume_RayCast_" #Name, ZOX_CASTER_WORDS(__VA_ARGS__), \
                                              zox::rules);                                                \
    zox_check::check_caster(caster, volume, rays);                                                        \
    return ZOX_CHECK_NEXT(name)(volume, rays);                                                            \
  }

#define ZOX_CHECK_CASTER(Name, name, rules, ...)                      \
  ZOX_CHECK_WRAP(zox_Volume_RayCast_##Name, Name, rules, __VA_ARGS__) \
  ZOX_CHECK_WRAP(__zox_Volume_RayCast_##Name, Name, rules, __VA_ARGS__)

ZOX_CASTERS(ZOX_CHECK_CASTER)
