#define ZOX_SET base
#define ZOX_SET_NAME "base"
#define ZOX_SET_SUPPORTED always_supported
#include "operations/kernels.inl"
