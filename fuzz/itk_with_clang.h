// Debian's ITK knows the compiler that it was built with and turns others away; clang takes its
// headers all the same once this one has been read as if by g++. Included before everything else.
#pragma once

#pragma push_macro("__clang__")
#pragma push_macro("__GNUC__")
#undef __clang__
#undef __GNUC__
#define __GNUC__ 12
#include <itk_compiler_detection.h>
#pragma pop_macro("__GNUC__")
#pragma pop_macro("__clang__")
