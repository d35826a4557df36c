// Lines of the cache are asked for before their voxels are read: memory then works on many at once. A
// prefetch neither faults nor brings in a page, so it visits no slice. The compiler drops calls of a
// function that does nothing but prefetch: whatever asks is always_inline.
#pragma once

#include "sets/set.h"

namespace zox::ZOX_SET {
namespace {

// Below so many samples asking costs more than waiting.
constexpr int kFewToAsk = 32;

// Of the bytes at base + at[i], i < n, those whose lines are not those of the sample before or of that
// eight before, a neighbour in a tile of 8 x 8 rays. Returns how many; `to` has room for a vector more.
inline int lines_of(const char* base, const int* at, int n, int* to) {
  const int misalignment = static_cast<int>(reinterpret_cast<uintptr_t>(base) & 63);
  Vector before = broadcast(INT32_MIN);
  int lines = 0;
  for (int i = 0; i < n; i += kVector) {
    Vector element = load<Vector>(at + i);
    Vector line = shift_right(element + broadcast(misalignment), 6);
    unsigned known = bits_of(equal(line, lanes_before<1>(before, line)));
    if constexpr (kVector >= 8) known |= bits_of(equal(line, lanes_before<8>(before, line)));
    unsigned wanted = ~known & ((1u << (n - i < kVector ? n - i : kVector)) - 1);
    Packing(wanted).append(to + lines, element);
    lines += __builtin_popcount(wanted);
    before = line;
  }
  return lines;
}

}  // namespace
}  // namespace zox::ZOX_SET
