// Numbers: the one conversion of doubles to integers, and 32-bit sums that wrap.
#pragma once

#include <immintrin.h>
#include <stdint.h>

#include "core/lanes.h"

namespace zox::ZOX_SET {
namespace {

enum class Rounding {
  kTruncated,  // toward zero
  kRounded,    // 0.5 added, then toward zero, also for negative values
};

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

}  // namespace
}  // namespace zox::ZOX_SET
