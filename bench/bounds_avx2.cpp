#define ZOX_SET avx2
#define ZOX_BENCH_BOUNDS bounds_avx2
#include "bounds_parts.inl"
