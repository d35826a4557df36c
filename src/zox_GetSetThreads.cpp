#include "export.h"

// The library's only mutable global. Nothing but these two accessors uses it.
int32_t zox_nthreads = -1;

int zox_GetNumThreads(int* count) {
  *count = zox_nthreads;
  return ZOX_STS_NO_ERROR;
}

int zox_SetNumThreads(int count) {
  zox_nthreads = count;
  return ZOX_STS_NO_ERROR;
}

ZOX_SECOND_NAME(zox_GetNumThreads);
ZOX_SECOND_NAME(zox_SetNumThreads);
