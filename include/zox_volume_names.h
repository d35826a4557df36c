/*
 * The second names: every operation of zox_volume.h again under its name with two leading
 * underscores, the same function at the same address, with the same contract.
 *
 * They stand in a header of their own because names of this form are reserved for the
 * implementation and compilers can be told to warn about them. The ray casters reach the allocator
 * through __zox_Malloc and __zox_Free, so a library that is loaded earlier and defines these two
 * replaces it for them; both must then be replaced together.
 */
#ifndef ZOX_VOLUME_NAMES_H
#define ZOX_VOLUME_NAMES_H

#include "zox_volume.h"

#ifdef __cplusplus
extern "C" {
#endif

const char* __zox_GetStringStatus(int status);
const char* __zox_GetVersion(void);
int __zox_GetNumThreads(int* count);
int __zox_SetNumThreads(int count);
void* __zox_Malloc(int size);
void __zox_Free(void* block);
void* __zox_AlignPointer(void* pointer, int alignment);
int __zox_Volume_RayCast_Blocked_Divergent_Nearest_8U(const zox_Volume* volume, const zox_Rays* rays);
int __zox_Volume_RayCast_Blocked_Divergent_Nearest_16S(const zox_Volume* volume, const zox_Rays* rays);
int __zox_Volume_RayCast_Blocked_Divergent_Trilinear_8U(const zox_Volume* volume, const zox_Rays* rays);
int __zox_Volume_RayCast_Blocked_Divergent_Trilinear_16S(const zox_Volume* volume, const zox_Rays* rays);
int __zox_Volume_RayCast_Blocked_Parallel_Nearest_8U(const zox_Volume* volume, const zox_Rays* rays);
int __zox_Volume_RayCast_Blocked_Parallel_Nearest_16S(const zox_Volume* volume, const zox_Rays* rays);
int __zox_Volume_RayCast_Blocked_Parallel_Trilinear_8U(const zox_Volume* volume, const zox_Rays* rays);
int __zox_Volume_RayCast_Blocked_Parallel_Trilinear_16S(const zox_Volume* volume, const zox_Rays* rays);
int __zox_Volume_RayCast_General_Divergent_Nearest_8U(const zox_Volume* volume, const zox_Rays* rays);
int __zox_Volume_RayCast_General_Divergent_Nearest_16S(const zox_Volume* volume, const zox_Rays* rays);
int __zox_Volume_RayCast_General_Divergent_Nearest_Bit_8U(const zox_Volume* volume, const zox_Rays* rays);
int __zox_Volume_RayCast_General_Divergent_Trilinear_8U(const zox_Volume* volume, const zox_Rays* rays);
int __zox_Volume_RayCast_General_Divergent_Trilinear_16S(const zox_Volume* volume, const zox_Rays* rays);
int __zox_Volume_RayCast_General_Parallel_Nearest_8U(const zox_Volume* volume, const zox_Rays* rays);
int __zox_Volume_RayCast_General_Parallel_Nearest_16S(const zox_Volume* volume, const zox_Rays* rays);
int __zox_Volume_RayCast_General_Parallel_Nearest_Bit_8U(const zox_Volume* volume, const zox_Rays* rays);
int __zox_Volume_RayCast_General_Parallel_Trilinear_8U(const zox_Volume* volume, const zox_Rays* rays);
int __zox_Volume_RayCast_General_Parallel_Trilinear_16S(const zox_Volume* volume, const zox_Rays* rays);
int __zox_Volume_FindMax_8U(const zox_Rays* rays, uint8_t* maxima);
int __zox_Volume_FindMax_16S(const zox_Rays* rays, int16_t* maxima);
int __zox_Volume_FindMaxBMask_8U(const zox_Rays* rays, const uint8_t* mask, uint8_t* maxima);
int __zox_Volume_FindMaxBMask_16S(const zox_Rays* rays, const uint8_t* mask, int16_t* maxima);
int __zox_Volume_FindMaxCMask_8U(const zox_Rays* rays, const uint8_t* mask, int threshold, uint8_t* maxima);
int __zox_Volume_FindMaxCMask_16S(const zox_Rays* rays, const uint8_t* mask, int threshold, int16_t* maxima);
int __zox_Volume_WindowLevel_16S_8U(const int16_t* src, uint8_t* dst, int len, int center, int width,
                                    int outmin, int outmax);

#ifdef __cplusplus
}
#endif

#endif /* ZOX_VOLUME_NAMES_H */
