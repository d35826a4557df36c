/* What a program may tell the contract checker, libzox_volume_check.so.

   The records of a volume do not say how many columns and rows its slices have, nor how deep a
   blocked buffer is. A program that wants these bounds checked as well registers them. The
   functions are declared weak: they are null when the checker is not loaded, so ask first.

       if (zox_check_stack) zox_check_stack(volume.slices, 512, 512);

   All of them may be called from any thread. */
#ifndef ZOX_VOLUME_CHECK_H
#define ZOX_VOLUME_CHECK_H

#ifdef __cplusplus
extern "C" {
#endif

/* The slices of the stack at `slices` (the pointer in zox_Volume) have this many columns and rows. */
__attribute__((weak)) void zox_check_stack(const void* const* slices, int columns, int rows);

/* The blocked buffer at `data` (the pointer in zox_Volume) is this many voxels deep, the layers
   that only pad its last bricks included. */
__attribute__((weak)) void zox_check_blocked(const void* data, int depth);

/* Forgets what was registered for `slices` or `data`: call it before that memory is used anew. */
__attribute__((weak)) void zox_check_forget(const void* volume_pointer);

#ifdef __cplusplus
}
#endif

#endif /* ZOX_VOLUME_CHECK_H */
