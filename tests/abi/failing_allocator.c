// To be preloaded: an allocator for the ray casters that never has memory.
#include <stdlib.h>

#include "zox_volume_names.h"

void* __zox_Malloc(int size) {
  (void)size;
  return NULL;
}

// Without a block there is nothing to release: only null may come here.
void __zox_Free(void* block) {
  if (block) abort();
}
