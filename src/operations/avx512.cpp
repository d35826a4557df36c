#define ZOX_SET avx512
#define ZOX_SET_NAME "avx512"
#define ZOX_SET_SUPPORTED avx512_supported
#include "operations/kernels.inl"
