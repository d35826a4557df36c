/* A user of the installed package: both headers, one call under each name. */
#include <zox_volume.h>
#include <zox_volume_names.h>

int main(void) {
  void* block = zox_Malloc(100);
  int aligned = zox_AlignPointer(block, 64) == block;
  __zox_Free(block);
  return block && aligned ? 0 : 1;
}
