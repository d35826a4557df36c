#define ZOX_SET avx512
#include "functions.inl"
