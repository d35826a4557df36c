#define ZOX_SET avx2
#include "functions.inl"
