// What every instruction set has alike: numbers at any address, vectors as the compiler knows them, and 16
// bytes at a time.
#pragma once

#include <immintrin.h>
#include <stdint.h>

namespace zox::ZOX_SET {
namespace {

// The processor's conversion: toward zero, 0x80000000 for what does not fit. A cast would leave
// the latter to the compiler.
inline int truncate(double v) { return _mm_cvttsd_si32(_mm_set_sd(v)); }

template <class T>
T load(const void* from) {
  T value;
  __builtin_memcpy(&value, from, sizeof value);
  return value;
}
template <class T>
void store(void* to, T value) {
  __builtin_memcpy(to, &value, sizeof value);
}

// `bytes` of numbers side by side. The compiler knows +, *, <, ?: and the like for them, number by number.
template <class Number, int bytes>
struct Numbers {
  using Type [[gnu::vector_size(bytes)]] = Number;
};
template <class Number, int bytes>
using NumbersOf = typename Numbers<Number, bytes>::Type;

using Sixteen = __m128i;  // bytes
// Of 16 bytes bit i is set where byte i is not 0.
inline unsigned nonzero_bytes(const uint8_t* from) {
  int zeros = _mm_movemask_epi8(_mm_cmpeq_epi8(load<Sixteen>(from), Sixteen{}));
  return ~static_cast<unsigned>(zeros) & 0xFFFF;
}
// 16-bit numbers as bytes, what does not fit as 0 or 255.
inline Sixteen packed_bytes(Sixteen low, Sixteen high) { return _mm_packus_epi16(low, high); }

// Numbers side by side, number i being at(i).
template <class At>
[[gnu::always_inline]] inline Sixteen eight_numbers(At at) {
  return Sixteen(NumbersOf<uint16_t, 16>{at(0), at(1), at(2), at(3), at(4), at(5), at(6), at(7)});
}
template <class At>
[[gnu::always_inline]] inline Sixteen four_numbers(At at) {
  return Sixteen(NumbersOf<uint32_t, 16>{at(0), at(1), at(2), at(3)});
}

// Whether eight numbers follow one another.
inline bool consecutive_8(const int* number) {
  using Four = NumbersOf<uint32_t, 16>;
  const Four first = Four{} + static_cast<uint32_t>(number[0]);
  const auto low = load<Four>(number) - first == Four{0, 1, 2, 3};
  const auto high = load<Four>(number + 4) - first == Four{4, 5, 6, 7};
  return _mm_movemask_epi8(Sixteen(low & high)) == 0xFFFF;
}

}  // namespace
}  // namespace zox::ZOX_SET
