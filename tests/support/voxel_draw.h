// Voxel contents, drawn so that rounding shows: near zero, near the ends of the type, or anything.
#pragma once

#include "guarded_buffer.h"

namespace zox_test {

enum class Contents { kAny, kZeroOrOne, kExtreme };

Contents draw_contents(Random& random);

// Fills `bytes` bytes with voxels of `element_size` bytes.
void fill_voxels(uint8_t* at, size_t bytes, int element_size, Contents contents, Random& random);

}  // namespace zox_test
