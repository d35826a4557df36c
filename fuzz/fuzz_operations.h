// One function a family: takes the fuzzer's bytes for a valid call, compares library and reference.
#pragma once

#include "random.h"

namespace zox_fuzz {

void fuzz_caster(int number, const uint8_t* bytes, size_t size);
void fuzz_maximum(int number, zox_test::Random random);
void fuzz_window_level(zox_test::Random random);
void fuzz_frame(int number, zox_test::Random random);

}  // namespace zox_fuzz
