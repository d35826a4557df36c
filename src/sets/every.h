// What every instruction set has alike: 16 bytes at a time.
#pragma once

#include <immintrin.h>
#include <stdint.h>

namespace zox::ZOX_SET {
namespace {

// The processor's conversion: toward zero, 0x80000000 for what does not fit. A cast would leave
// the latter to the compiler.
inline int truncate(double v) { return _mm_cvttsd_si32(_mm_set_sd(v)); }

using Sixteen = __m128i;  // bytes
inline Sixteen load_16(const void* from) { return _mm_loadu_si128(static_cast<const __m128i*>(from)); }
inline void store_16(void* to, Sixteen v) { _mm_storeu_si128(static_cast<__m128i*>(to), v); }
inline Sixteen zeros_16() { return _mm_setzero_si128(); }
// Of 16 bytes bit i is set where byte i is not 0.
inline unsigned nonzero_bytes(const uint8_t* from) {
  int zeros = _mm_movemask_epi8(_mm_cmpeq_epi8(load_16(from), zeros_16()));
  return ~static_cast<unsigned>(zeros) & 0xFFFF;
}
// 16-bit numbers as bytes, what does not fit as 0 or 255.
inline Sixteen packed_bytes(Sixteen low, Sixteen high) { return _mm_packus_epi16(low, high); }

// 16 bytes, or the first 8 or 4 of them: every set has these.
template <int bytes>
struct SampleVector {
  __m128i v;

  static SampleVector load(const void* from) {
    SampleVector w{_mm_setzero_si128()};
    if constexpr (bytes == 16) w.v = _mm_loadu_si128(static_cast<const __m128i*>(from));
    if constexpr (bytes == 8) w.v = _mm_loadl_epi64(static_cast<const __m128i*>(from));
    if constexpr (bytes == 4) w.v = _mm_loadu_si32(from);
    return w;
  }
  void store(void* to) const { __builtin_memcpy(to, &v, bytes); }
  static SampleVector all(uint8_t value) { return {_mm_set1_epi8(static_cast<char>(value))}; }
  static SampleVector all(int16_t value) { return {_mm_set1_epi16(value)}; }
};

inline __m128i larger_of(uint8_t, __m128i a, __m128i b) { return _mm_max_epu8(a, b); }
inline __m128i larger_of(int16_t, __m128i a, __m128i b) { return _mm_max_epi16(a, b); }
inline __m128i above(uint8_t, __m128i a, __m128i b) { return _mm_cmpgt_epi8(a, b); }
inline __m128i above(int16_t, __m128i a, __m128i b) { return _mm_cmpgt_epi16(a, b); }
inline __m128i where(__m128i on, __m128i yes, __m128i no) {
  return _mm_or_si128(_mm_and_si128(on, yes), _mm_andnot_si128(on, no));
}

// Numbers side by side, number i being at(i).
template <class At>
[[gnu::always_inline]] inline Sixteen eight_numbers(At at) {
  const auto number = [&](int i) { return static_cast<int16_t>(at(i)); };
  return _mm_setr_epi16(number(0), number(1), number(2), number(3), number(4), number(5), number(6),
                        number(7));
}
template <class At>
[[gnu::always_inline]] inline Sixteen four_numbers(At at) {
  const auto number = [&](int i) { return static_cast<int32_t>(at(i)); };
  return _mm_setr_epi32(number(0), number(1), number(2), number(3));
}

// Whether eight numbers follow one another.
inline bool consecutive_8(const int* number) {
  __m128i first = _mm_set1_epi32(number[0]);
  __m128i low = _mm_sub_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(number)), first);
  __m128i high = _mm_sub_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(number + 4)), first);
  __m128i right = _mm_and_si128(_mm_cmpeq_epi32(low, _mm_set_epi32(3, 2, 1, 0)),
                                _mm_cmpeq_epi32(high, _mm_set_epi32(7, 6, 5, 4)));
  return _mm_movemask_epi8(right) == 0xFFFF;
}

}  // namespace
}  // namespace zox::ZOX_SET
