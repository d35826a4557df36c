#include <stdint.h>
#include <stdlib.h>

#include "export.h"

// A block starts on a 64-byte boundary; the 8 bytes below it hold what malloc returned.
static const int kAlignment = 64;
static const int kHeader = 8;

void* zox_Malloc(int size) {
  if (size < 1) return nullptr;
  // The sum wraps in 32 bits for sizes close to INT_MAX; widened with its sign it becomes a
  // request that malloc refuses.
  int32_t room = static_cast<int32_t>(static_cast<uint32_t>(size) + kAlignment);
  char* raw = static_cast<char*>(malloc(static_cast<size_t>(static_cast<int64_t>(room)) + kHeader));
  if (!raw) return nullptr;
  char* lowest = raw + kHeader;
  char* block = lowest + (-reinterpret_cast<uintptr_t>(lowest) & (kAlignment - 1));
  reinterpret_cast<void**>(block)[-1] = raw;
  return block;
}

void zox_Free(void* block) {
  if (block) free(static_cast<void**>(block)[-1]);
}

void* zox_AlignPointer(void* pointer, int alignment) {
  uint32_t bits = static_cast<uint32_t>(alignment);
  int64_t add = static_cast<int32_t>(bits - 1);
  int64_t mask = static_cast<int32_t>(0 - bits);
  return reinterpret_cast<void*>((reinterpret_cast<uintptr_t>(pointer) + static_cast<uintptr_t>(add)) &
                                 static_cast<uintptr_t>(mask));
}

ZOX_SECOND_NAME(zox_Malloc);
ZOX_SECOND_NAME(zox_Free);
ZOX_SECOND_NAME(zox_AlignPointer);
