// The same source as C++17.
#if __cplusplus != 201703L
#error "to be compiled as C++17"
#endif
#define CHAIN layout_chain_in_cpp17
#include "layout_chain.c"
