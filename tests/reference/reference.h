// A plain scalar model of every volume operation: each sample computed on its own, straight from
// the documented rules, with no code in common with the library. Names and arguments are those of
// the library's function tables. No operation takes scratch that can run out: the status of a
// ray caster is always ZOX_STS_NO_ERROR.
//
// Two things hold beyond the library's contract, so that inputs at its edge are comparable: a
// sample of a slice stack whose slice is not among 0 .. nslices - 1 is left unwritten, and the
// search for a sample's region stops at the first and the last region. (Parallel nearest rays on
// the one-region path do neither: that path knows only the slices it is led to.)
#pragma once

#include "zox_volume.h"

namespace reference {

int blocked_divergent_nearest_8u(const zox_Volume* volume, const zox_Rays* rays);
int blocked_divergent_nearest_16s(const zox_Volume* volume, const zox_Rays* rays);
int blocked_divergent_trilinear_8u(const zox_Volume* volume, const zox_Rays* rays);
int blocked_divergent_trilinear_16s(const zox_Volume* volume, const zox_Rays* rays);
int blocked_parallel_nearest_8u(const zox_Volume* volume, const zox_Rays* rays);
int blocked_parallel_nearest_16s(const zox_Volume* volume, const zox_Rays* rays);
int blocked_parallel_trilinear_8u(const zox_Volume* volume, const zox_Rays* rays);
int blocked_parallel_trilinear_16s(const zox_Volume* volume, const zox_Rays* rays);

int general_divergent_nearest_8u(const zox_Volume* volume, const zox_Rays* rays);
int general_divergent_nearest_16s(const zox_Volume* volume, const zox_Rays* rays);
int general_divergent_nearest_bit_8u(const zox_Volume* volume, const zox_Rays* rays);
int general_divergent_trilinear_8u(const zox_Volume* volume, const zox_Rays* rays);
int general_divergent_trilinear_16s(const zox_Volume* volume, const zox_Rays* rays);
int general_parallel_nearest_8u(const zox_Volume* volume, const zox_Rays* rays);
int general_parallel_nearest_16s(const zox_Volume* volume, const zox_Rays* rays);
int general_parallel_nearest_bit_8u(const zox_Volume* volume, const zox_Rays* rays);
int general_parallel_trilinear_8u(const zox_Volume* volume, const zox_Rays* rays);
int general_parallel_trilinear_16s(const zox_Volume* volume, const zox_Rays* rays);

// Which of its two ways a parallel nearest caster of slice stacks goes.
bool takes_one_region_path(const zox_Volume& volume, const zox_Rays& rays);

int find_max_8u(const zox_Rays* rays, uint8_t* maxima);
int find_max_16s(const zox_Rays* rays, int16_t* maxima);
int find_max_bmask_8u(const zox_Rays* rays, const uint8_t* mask, uint8_t* maxima);
int find_max_bmask_16s(const zox_Rays* rays, const uint8_t* mask, int16_t* maxima);
int find_max_cmask_8u(const zox_Rays* rays, const uint8_t* mask, int threshold, uint8_t* maxima);
int find_max_cmask_16s(const zox_Rays* rays, const uint8_t* mask, int threshold, int16_t* maxima);

int window_level_16s_8u(const int16_t* src, uint8_t* dst, int len, int center, int width, int outmin,
                        int outmax);

}  // namespace reference
