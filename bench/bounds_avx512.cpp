#define ZOX_SET avx512
#define ZOX_BENCH_BOUNDS bounds_avx512
#include "bounds_parts.inl"
