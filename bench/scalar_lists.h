// A second scalar baseline for the general ray casters: every sample is pushed onto the list of its
// slice, then the slices are swept in ascending order. Signatures and results are the library's.
#pragma once

#include "zox_volume.h"

namespace lists {

int general_divergent_nearest_8u(const zox_Volume* volume, const zox_Rays* rays);
int general_divergent_nearest_16s(const zox_Volume* volume, const zox_Rays* rays);
int general_divergent_nearest_bit_8u(const zox_Volume* volume, const zox_Rays* rays);
int general_divergent_trilinear_8u(const zox_Volume* volume, const zox_Rays* rays);
int general_divergent_trilinear_16s(const zox_Volume* volume, const zox_Rays* rays);
// The parallel nearest ones know the slice lists only: not for volumes of one region.
int general_parallel_nearest_8u(const zox_Volume* volume, const zox_Rays* rays);
int general_parallel_nearest_16s(const zox_Volume* volume, const zox_Rays* rays);
int general_parallel_nearest_bit_8u(const zox_Volume* volume, const zox_Rays* rays);
int general_parallel_trilinear_8u(const zox_Volume* volume, const zox_Rays* rays);
int general_parallel_trilinear_16s(const zox_Volume* volume, const zox_Rays* rays);

}  // namespace lists
