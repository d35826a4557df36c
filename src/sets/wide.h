// Running maxima of samples as they lie in a plane, a vector of bytes at a time.
#pragma once

#include <immintrin.h>
#include <stdint.h>

namespace zox::ZOX_SET {
namespace {

// 16 bytes, or the first 8 or 4 of them: every set has these.
template <int bytes>
struct Wide {
  __m128i v;

  static Wide load(const void* from) {
    Wide w{_mm_setzero_si128()};
    if constexpr (bytes == 16) w.v = _mm_loadu_si128(static_cast<const __m128i*>(from));
    if constexpr (bytes == 8) w.v = _mm_loadl_epi64(static_cast<const __m128i*>(from));
    if constexpr (bytes == 4) w.v = _mm_loadu_si32(from);
    return w;
  }
  void store(void* to) const { __builtin_memcpy(to, &v, bytes); }
  static Wide all(uint8_t value) { return {_mm_set1_epi8(static_cast<char>(value))}; }
  static Wide all(int16_t value) { return {_mm_set1_epi16(value)}; }
};

inline __m128i larger_of(uint8_t, __m128i a, __m128i b) { return _mm_max_epu8(a, b); }
inline __m128i larger_of(int16_t, __m128i a, __m128i b) { return _mm_max_epi16(a, b); }
inline __m128i above(uint8_t, __m128i a, __m128i b) { return _mm_cmpgt_epi8(a, b); }
inline __m128i above(int16_t, __m128i a, __m128i b) { return _mm_cmpgt_epi16(a, b); }
inline __m128i where(__m128i on, __m128i yes, __m128i no) {
  return _mm_or_si128(_mm_and_si128(on, yes), _mm_andnot_si128(on, no));
}

#if defined(__AVX512BW__)

template <>
struct Wide<64> {
  __m512i v;
  static Wide load(const void* from) { return {_mm512_loadu_si512(from)}; }
  void store(void* to) const { _mm512_storeu_si512(to, v); }
  static Wide all(uint8_t value) { return {_mm512_set1_epi8(static_cast<char>(value))}; }
  static Wide all(int16_t value) { return {_mm512_set1_epi16(value)}; }
};
constexpr int kWideBytes = 64;

inline __m512i larger_of(uint8_t, __m512i a, __m512i b) { return _mm512_max_epu8(a, b); }
inline __m512i larger_of(int16_t, __m512i a, __m512i b) { return _mm512_max_epi16(a, b); }
inline __mmask64 above(uint8_t, __m512i a, __m512i b) { return _mm512_cmpgt_epi8_mask(a, b); }
inline __mmask32 above(int16_t, __m512i a, __m512i b) { return _mm512_cmpgt_epi16_mask(a, b); }
inline __m512i where(__mmask64 on, __m512i yes, __m512i no) { return _mm512_mask_mov_epi8(no, on, yes); }
inline __m512i where(__mmask32 on, __m512i yes, __m512i no) { return _mm512_mask_mov_epi16(no, on, yes); }

#elif defined(__AVX2__)

template <>
struct Wide<32> {
  __m256i v;
  static Wide load(const void* from) { return {_mm256_loadu_si256(static_cast<const __m256i*>(from))}; }
  void store(void* to) const { _mm256_storeu_si256(static_cast<__m256i*>(to), v); }
  static Wide all(uint8_t value) { return {_mm256_set1_epi8(static_cast<char>(value))}; }
  static Wide all(int16_t value) { return {_mm256_set1_epi16(value)}; }
};
constexpr int kWideBytes = 32;

inline __m256i larger_of(uint8_t, __m256i a, __m256i b) { return _mm256_max_epu8(a, b); }
inline __m256i larger_of(int16_t, __m256i a, __m256i b) { return _mm256_max_epi16(a, b); }
inline __m256i above(uint8_t, __m256i a, __m256i b) { return _mm256_cmpgt_epi8(a, b); }
inline __m256i above(int16_t, __m256i a, __m256i b) { return _mm256_cmpgt_epi16(a, b); }
inline __m256i where(__m256i on, __m256i yes, __m256i no) { return _mm256_blendv_epi8(no, yes, on); }

#else

constexpr int kWideBytes = 16;

#endif

// The larger of the running maximum and the sample, lane by lane.
template <class Element, class W>
W larger(W maximum, W sample) {
  return {larger_of(Element{}, maximum.v, sample.v)};
}

// The same where limit < count, as signed numbers of the element's size; elsewhere the maximum.
template <class Element, class W>
W larger_where(W count, W limit, W maximum, W sample) {
  auto on = above(Element{}, count.v, limit.v);
  return {larger_of(Element{}, maximum.v, where(on, sample.v, maximum.v))};
}

}  // namespace
}  // namespace zox::ZOX_SET
