/* What a small chain of zox_volume_layout.h's functions comes to, in each language. */
#ifndef LAYOUT_CHAIN_H
#define LAYOUT_CHAIN_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct LayoutChain {
  int32_t size, regions, first, count;
  uint64_t elements;
  uint32_t last; /* the index of the last voxel */
  int changed;   /* voxels that packing and unpacking changed */
  int status;
  int16_t samples[64];
} LayoutChain;

LayoutChain layout_chain_in_c11(void);
LayoutChain layout_chain_in_cpp17(void);

#ifdef __cplusplus
}
#endif

#endif
