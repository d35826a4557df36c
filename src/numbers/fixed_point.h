// Numbers: doubles to integers, all by truncate(), and 32-bit sums that wrap.
#pragma once

#include <stdint.h>

#include "numbers/lanes.h"
#include "numbers/rounding.h"
#include "sets/set.h"

namespace zox::ZOX_SET {
namespace {

template <Rounding rounding>
inline int to_fixed(double v, double scale) {
  return truncate(rounding == Rounding::kRounded ? v * scale + 0.5 : v * scale);
}

inline int wrap_add(int a, int b) {
  return static_cast<int>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
inline int wrap_sub(int a, int b) {
  return static_cast<int>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}
inline int wrap_mul(int a, int b) {
  return static_cast<int>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

// truncate() on every lane.
inline void truncate_lanes(const double* from, int* to, int n) {
  for (int i = 0; i < padded(n); i += kDoubles) store_truncated(to + i, load<Doubles>(from + i));
}

// to_fixed() of every lane with a bias.
template <Rounding rounding>
void to_fixed_lanes(const Lanes<double>& from, double bias, double scale, Lanes<int>& to, int n) {
  for (int i = 0; i < padded(n); i += kDoubles) {
    const Doubles scaled = (load<Doubles>(&from[i]) + bias) * scale;
    store_truncated(&to[i], rounding == Rounding::kRounded ? scaled + 0.5 : scaled);
  }
}

}  // namespace
}  // namespace zox::ZOX_SET
