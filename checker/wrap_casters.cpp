#include "checks.h"
#include "wrap.h"
#include "zox_volume.h"
#include "zox_volume_names.h"

#define ZOX_CHECK_WRAP(name, operation, ...)                                  \
  ZOX_CHECK_EXPORT int name(const zox_Volume* volume, const zox_Rays* rays) { \
    static constexpr zox_check::Caster caster = {#operation, __VA_ARGS__};    \
    zox_check::check_caster(caster, volume, rays);                            \
    return ZOX_CHECK_NEXT(name)(volume, rays);                                \
  }

#define ZOX_CHECK_CASTER(layout, projection, sampling, words, voxel)                                 \
  ZOX_CHECK_WRAP(zox_Volume_RayCast_##layout##_##projection##_##words,                               \
                 zox_Volume_RayCast_##layout##_##projection##_##words, zox_check::Layout::k##layout, \
                 zox_check::Projection::k##projection, zox_check::Sampling::k##sampling,             \
                 zox_check::Voxel::voxel)                                                            \
  ZOX_CHECK_WRAP(__zox_Volume_RayCast_##layout##_##projection##_##words,                             \
                 zox_Volume_RayCast_##layout##_##projection##_##words, zox_check::Layout::k##layout, \
                 zox_check::Projection::k##projection, zox_check::Sampling::k##sampling,             \
                 zox_check::Voxel::voxel)

#define ZOX_CHECK_CASTERS(layout, projection)                        \
  ZOX_CHECK_CASTER(layout, projection, Nearest, Nearest_8U, k8U)     \
  ZOX_CHECK_CASTER(layout, projection, Nearest, Nearest_16S, k16S)   \
  ZOX_CHECK_CASTER(layout, projection, Trilinear, Trilinear_8U, k8U) \
  ZOX_CHECK_CASTER(layout, projection, Trilinear, Trilinear_16S, k16S)

ZOX_CHECK_CASTERS(Blocked, Divergent)
ZOX_CHECK_CASTERS(Blocked, Parallel)
ZOX_CHECK_CASTERS(General, Divergent)
ZOX_CHECK_CASTERS(General, Parallel)
ZOX_CHECK_CASTER(General, Divergent, Nearest, Nearest_Bit_8U, kBit)
ZOX_CHECK_CASTER(General, Parallel, Nearest, Nearest_Bit_8U, kBit)
