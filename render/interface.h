// The public header, whose functions alone are seen from outside of the library.
#pragma once

#pragma GCC visibility push(default)
#include <zox_render.h>
#pragma GCC visibility pop
