// Real scans, read in the plainest way; null where the package that brings them is not installed.
#pragma once

#include <memory>

#include "array_scene.h"

namespace zox_test {

// The brain of mricron-data: 301 x 370 x 316 voxels of 0.5 mm, 8 bits.
std::unique_ptr<Scene> read_brain();

// The head of invesalius-examples: 256 x 256 x 108 voxels of 0.957 x 0.957 x 1.5 mm, 16 bits.
std::unique_ptr<Scene> read_head();

// The head's values divided so that they fill 0 .. 255.
std::unique_ptr<Scene> head_in_8_bits(const Scene& head);

}  // namespace zox_test
