// What the operations target does where the library and the reference disagree.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace zox_fuzz {

// libFuzzer keeps the input and prints how to run it again.
[[noreturn]] inline void disagree(const std::string& what) {
  std::fprintf(stderr, "The library differs from the reference: %s\n", what.c_str());
  std::abort();
}

}  // namespace zox_fuzz
