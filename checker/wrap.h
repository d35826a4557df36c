// How a wrapper is written. Both names of an operation are wrapped, and each goes on to the next
// definition of the same name: a library preloaded behind the checker may replace one of them.
#pragma once

#include "next.h"

#define ZOX_CHECK_EXPORT extern "C" __attribute__((visibility("default")))

// The operation behind the wrapper `name`, looked up once.
#define ZOX_CHECK_NEXT(name)                                                   \
  ([] {                                                                        \
    static auto* const next = zox_check::next_function<decltype(name)>(#name); \
    return next;                                                               \
  }())
