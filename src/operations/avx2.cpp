#define ZOX_SET avx2
#define ZOX_SET_NAME "avx2"
#define ZOX_SET_SUPPORTED avx2_supported
#include "operations/kernels.inl"
