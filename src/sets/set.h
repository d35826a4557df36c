// The vectors of the set that a file is compiled for. What the compiler cannot say of them, or says of
// doubles by rules of its own, each set says under the same names: picking some lanes out of a vector and
// packing them, and conversions of doubles.
#pragma once

#if defined(__AVX512F__)
#include "sets/avx512.h"
#elif defined(__AVX2__)
#include "sets/avx2.h"
#else
#include "sets/base.h"
#endif

namespace zox::ZOX_SET {
namespace {

constexpr int kVectorBytes = sizeof(Vector);
constexpr int kDoubles = sizeof(Doubles) / sizeof(double);

// Numbers of lanes are unsigned, so that sums and products wrap; where the sign counts, they are taken as:
using SignedVector = NumbersOf<int, kVectorBytes>;

inline Vector broadcast(int v) { return Vector{} + static_cast<uint32_t>(v); }
inline Vector shift_right(Vector v, int bits) { return Vector(SignedVector(v) >> bits); }
inline Vector smaller(Vector a, Vector b) { return SignedVector(a) < SignedVector(b) ? a : b; }
inline int lowest_of(Vector v) {
  int lowest = INT32_MAX;
  for (int i = 0; i < kVector; ++i) {
    const int lane = static_cast<int>(v[i]);
    lowest = lane < lowest ? lane : lowest;
  }
  return lowest;
}

// Side by side, in stores as large as the set has: a vector read from several would wait for them.
inline void store_32(void* to, Sixteen a, Sixteen b) {
  if constexpr (kVectorBytes >= 32) return store(to, __builtin_shufflevector(a, b, 0, 1, 2, 3));
  store(to, a);
  store(static_cast<char*>(to) + 16, b);
}
inline void store_64(void* to, Sixteen a, Sixteen b, Sixteen c, Sixteen d) {
  if constexpr (kVectorBytes == 64) {
    const auto low = __builtin_shufflevector(a, b, 0, 1, 2, 3),
               high = __builtin_shufflevector(c, d, 0, 1, 2, 3);
    return store(to, __builtin_shufflevector(low, high, 0, 1, 2, 3, 4, 5, 6, 7));
  }
  store_32(to, a, b);
  store_32(static_cast<char*>(to) + 32, c, d);
}

}  // namespace
}  // namespace zox::ZOX_SET
