// What the library shows: every declaration of the public headers, nothing else.
#pragma once

#pragma GCC visibility push(default)
#include "zox_volume.h"
#include "zox_volume_names.h"
#pragma GCC visibility pop

// Gives an operation its second name, __zox_..., at the same address.
#define ZOX_SECOND_NAME(name) extern "C" __attribute__((alias(#name))) decltype(name) __##name
