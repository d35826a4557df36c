// The few vector operations that loops over lanes cannot say: picking some lanes out of a vector
// and packing them. kVector lanes of 32 bits.
#pragma once

#include <immintrin.h>
#include <stdint.h>

namespace zox::ZOX_SET {
namespace {

#if defined(__AVX512F__)

constexpr int kVector = 16;
using Vector = __m512i;
using Mask = __mmask16;

inline Vector load_vector(const int* from) { return _mm512_load_si512(from); }
inline Vector load_anywhere(const int* from) { return _mm512_loadu_si512(from); }
inline void store_vector(int* to, Vector v) { _mm512_store_si512(to, v); }
inline void store_anywhere(int* to, Vector v) { _mm512_storeu_si512(to, v); }
inline Vector broadcast(int v) { return _mm512_set1_epi32(v); }
inline Mask equal(Vector a, Vector b) { return _mm512_cmpeq_epi32_mask(a, b); }
inline Mask both(Mask a, Mask b) { return a & b; }
inline unsigned bits_of(Mask m) { return m; }
inline Vector select(Mask m, Vector yes, Vector no) { return _mm512_mask_mov_epi32(no, m, yes); }
inline Vector sum(Vector a, Vector b) { return _mm512_add_epi32(a, b); }
inline Vector add_where(Mask m, Vector a, Vector b) { return _mm512_mask_add_epi32(a, m, a, b); }
template <int bits>
Vector shift_right(Vector v) {
  return _mm512_srai_epi32(v, bits);
}
inline Vector shift_right(Vector v, int bits) { return _mm512_sra_epi32(v, _mm_cvtsi32_si128(bits)); }
inline Vector bits_in(Vector v, Vector mask) { return _mm512_and_si512(v, mask); }
inline Vector product(Vector a, Vector b) { return _mm512_mullo_epi32(a, b); }
inline Vector smaller(Vector a, Vector b) { return _mm512_min_epi32(a, b); }
// Lane i is what stands `by` lanes before it in `before` followed by v.
template <int by>
Vector lanes_before(Vector before, Vector v) {
  return _mm512_alignr_epi32(v, before, 16 - by);
}
inline int lowest_of(Vector v) { return _mm512_reduce_min_epi32(v); }

struct Packing {
  Mask mask;
  explicit Packing(unsigned bits) : mask(static_cast<Mask>(bits)) {}
  void append(int* to, Vector v) const { store_anywhere(to, _mm512_maskz_compress_epi32(mask, v)); }
};

#elif defined(__AVX2__)

constexpr int kVector = 8;
using Vector = __m256i;
using Mask = __m256i;

inline Vector load_vector(const int* from) {
  return _mm256_load_si256(reinterpret_cast<const __m256i*>(from));
}
inline Vector load_anywhere(const int* from) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}
inline void store_vector(int* to, Vector v) { _mm256_store_si256(reinterpret_cast<__m256i*>(to), v); }
inline void store_anywhere(int* to, Vector v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), v); }
inline Vector broadcast(int v) { return _mm256_set1_epi32(v); }
inline Mask equal(Vector a, Vector b) { return _mm256_cmpeq_epi32(a, b); }
inline Mask both(Mask a, Mask b) { return _mm256_and_si256(a, b); }
inline unsigned bits_of(Mask m) { return static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(m))); }
inline Vector select(Mask m, Vector yes, Vector no) { return _mm256_blendv_epi8(no, yes, m); }
inline Vector sum(Vector a, Vector b) { return _mm256_add_epi32(a, b); }
inline Vector add_where(Mask m, Vector a, Vector b) { return _mm256_add_epi32(a, _mm256_and_si256(m, b)); }
template <int bits>
Vector shift_right(Vector v) {
  return _mm256_srai_epi32(v, bits);
}
inline Vector shift_right(Vector v, int bits) { return _mm256_sra_epi32(v, _mm_cvtsi32_si128(bits)); }
inline Vector bits_in(Vector v, Vector mask) { return _mm256_and_si256(v, mask); }
inline Vector product(Vector a, Vector b) { return _mm256_mullo_epi32(a, b); }
inline Vector smaller(Vector a, Vector b) { return _mm256_min_epi32(a, b); }
template <int by>
Vector lanes_before(Vector before, Vector v) {
  if constexpr (by == kVector) return before;
  return _mm256_alignr_epi8(v, _mm256_permute2x128_si256(before, v, 0x21), (16 - 4 * by) & 15);
}
inline int lowest_of(Vector v) {
  __m128i low = _mm_min_epi32(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
  low = _mm_min_epi32(low, _mm_shuffle_epi32(low, 0x4E));
  low = _mm_min_epi32(low, _mm_shuffle_epi32(low, 0xB1));
  return _mm_cvtsi128_si32(low);
}

// For each set of 8 lanes, their numbers moved together.
struct PackingTable {
  alignas(8) uint8_t order[256][8] = {};
  constexpr PackingTable() {
    for (int mask = 0; mask < 256; ++mask) {
      for (int lane = 0, n = 0; lane < 8; ++lane) {
        if (mask >> lane & 1) order[mask][n++] = static_cast<uint8_t>(lane);
      }
    }
  }
};
constexpr PackingTable kPackingTable;

struct Packing {
  __m256i order;
  explicit Packing(unsigned bits)
      : order(_mm256_cvtepu8_epi32(
            _mm_loadl_epi64(reinterpret_cast<const __m128i*>(kPackingTable.order[bits])))) {}
  void append(int* to, Vector v) const { store_anywhere(to, _mm256_permutevar8x32_epi32(v, order)); }
};

#else

constexpr int kVector = 4;
using Vector = __m128i;
using Mask = __m128i;

inline Vector load_vector(const int* from) { return _mm_load_si128(reinterpret_cast<const __m128i*>(from)); }
inline Vector load_anywhere(const int* from) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}
inline void store_vector(int* to, Vector v) { _mm_store_si128(reinterpret_cast<__m128i*>(to), v); }
inline void store_anywhere(int* to, Vector v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), v); }
inline Vector broadcast(int v) { return _mm_set1_epi32(v); }
inline Mask equal(Vector a, Vector b) { return _mm_cmpeq_epi32(a, b); }
inline Mask both(Mask a, Mask b) { return _mm_and_si128(a, b); }
inline unsigned bits_of(Mask m) { return static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(m))); }
inline Vector select(Mask m, Vector yes, Vector no) {
  return _mm_or_si128(_mm_and_si128(m, yes), _mm_andnot_si128(m, no));
}
inline Vector sum(Vector a, Vector b) { return _mm_add_epi32(a, b); }
inline Vector add_where(Mask m, Vector a, Vector b) { return _mm_add_epi32(a, _mm_and_si128(m, b)); }
template <int bits>
Vector shift_right(Vector v) {
  return _mm_srai_epi32(v, bits);
}
inline Vector shift_right(Vector v, int bits) { return _mm_sra_epi32(v, _mm_cvtsi32_si128(bits)); }
inline Vector bits_in(Vector v, Vector mask) { return _mm_and_si128(v, mask); }
inline Vector product(Vector a, Vector b) {
  __m128i even = _mm_mul_epu32(a, b), odd = _mm_mul_epu32(_mm_srli_epi64(a, 32), _mm_srli_epi64(b, 32));
  return _mm_unpacklo_epi32(_mm_shuffle_epi32(even, 0x08), _mm_shuffle_epi32(odd, 0x08));
}
inline Vector smaller(Vector a, Vector b) { return select(_mm_cmplt_epi32(a, b), a, b); }
template <int by>
Vector lanes_before(Vector before, Vector v) {
  return _mm_or_si128(_mm_slli_si128(v, 4 * by), _mm_srli_si128(before, 16 - 4 * by));
}
inline int lowest_of(Vector v) {
  v = smaller(v, _mm_shuffle_epi32(v, 0x4E));
  v = smaller(v, _mm_shuffle_epi32(v, 0xB1));
  return _mm_cvtsi128_si32(v);
}

// Lane by lane, unless all are wanted: SSE2 has no shuffle by a variable.
struct Packing {
  unsigned bits;
  explicit Packing(unsigned wanted) : bits(wanted) {}
  void append(int* to, Vector v) const {
    if (bits == 15) return store_anywhere(to, v);
    alignas(16) int lane[4];
    store_vector(lane, v);
    for (int i = 0; i < 4; ++i) {
      *to = lane[i];
      to += bits >> i & 1;
    }
  }
};

#endif

template <int lane>
__m128i with_lane(__m128i v, uint16_t number) {
  return _mm_insert_epi16(v, number, lane);
}
template <int lane>
__m128i with_lane(__m128i v, uint32_t number) {
#if defined(__SSE4_1__)
  return _mm_insert_epi32(v, static_cast<int>(number), lane);
#else
  v = _mm_insert_epi16(v, static_cast<int>(number & 0xFFFF), 2 * lane);
  return _mm_insert_epi16(v, static_cast<int>(number >> 16), 2 * lane + 1);
#endif
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
