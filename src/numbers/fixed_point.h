// Numbers: the one conversion of doubles to integers, and 32-bit sums that wrap.
#pragma once

#include <immintrin.h>
#include <stdint.h>

#include "numbers/lanes.h"
#include "numbers/rounding.h"

namespace zox::ZOX_SET {
namespace {

// The processor's conversion: toward zero, 0x80000000 for what does not fit. A cast would leave
// the latter to the compiler.
inline int truncate(double v) { return _mm_cvttsd_si32(_mm_set_sd(v)); }

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
#if defined(__AVX512F__)
  for (int i = 0; i < padded(n); i += 8) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + i), _mm512_cvttpd_epi32(_mm512_loadu_pd(from + i)));
  }
#elif defined(__AVX__)
  for (int i = 0; i < padded(n); i += 4) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + i), _mm256_cvttpd_epi32(_mm256_loadu_pd(from + i)));
  }
#else
  for (int i = 0; i < padded(n); i += 2) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to + i), _mm_cvttpd_epi32(_mm_loadu_pd(from + i)));
  }
#endif
}

// truncate(value * slope + offset) of eight 16-bit values, saturated to 16 bits again. The
// compilers take the way from short integers to doubles and back through memory.
inline __m128i truncate_products(__m128i value, double slope, double offset) {
#if defined(__AVX512F__)
  __m512d real = _mm512_cvtepi32_pd(_mm256_cvtepi16_epi32(value));
  __m256i out =
      _mm512_cvttpd_epi32(_mm512_add_pd(_mm512_mul_pd(real, _mm512_set1_pd(slope)), _mm512_set1_pd(offset)));
  return _mm_packs_epi32(_mm256_castsi256_si128(out), _mm256_extracti128_si256(out, 1));
#elif defined(__AVX2__)
  auto four = [&](__m128i v) {
    __m256d real = _mm256_cvtepi32_pd(_mm_cvtepi16_epi32(v));
    return _mm256_cvttpd_epi32(
        _mm256_add_pd(_mm256_mul_pd(real, _mm256_set1_pd(slope)), _mm256_set1_pd(offset)));
  };
  return _mm_packs_epi32(four(value), four(_mm_unpackhi_epi64(value, value)));
#else
  auto two = [&](__m128i v) {
    return _mm_cvttpd_epi32(
        _mm_add_pd(_mm_mul_pd(_mm_cvtepi32_pd(v), _mm_set1_pd(slope)), _mm_set1_pd(offset)));
  };
  auto four = [&](__m128i v) { return _mm_unpacklo_epi64(two(v), two(_mm_unpackhi_epi64(v, v))); };
  __m128i low = _mm_srai_epi32(_mm_unpacklo_epi16(value, value), 16);
  __m128i high = _mm_srai_epi32(_mm_unpackhi_epi16(value, value), 16);
  return _mm_packs_epi32(four(low), four(high));
#endif
}

}  // namespace
}  // namespace zox::ZOX_SET
