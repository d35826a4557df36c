#define ZOX_SET base
#include "functions.inl"
