#include "volume/bounds.h"

#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace render {
namespace {

Size3 block_counts(const Size3& size, const Size3& shift) {
  Size3 counts;
  for (size_t a = 0; a < 3; ++a) counts[a] = (size[a] + (1 << shift[a]) - 1) >> shift[a];
  return counts;
}

uint64_t product(const Size3& size) {
  return static_cast<uint64_t>(size[0]) * static_cast<uint64_t>(size[1]) * static_cast<uint64_t>(size[2]);
}

// So many numbers are read at a time; what lies beyond the columns asked for is dropped at the end.
template <class Number>
constexpr int kLanesOf = 16 / static_cast<int>(sizeof(Number));

template <class Number>
constexpr Number worst_of(bool largest) {
  return largest ? std::numeric_limits<Number>::min() : std::numeric_limits<Number>::max();
}

template <bool kLargest>
__m128i extreme_of(__m128i a, __m128i b, int16_t) {
  return kLargest ? _mm_max_epi16(a, b) : _mm_min_epi16(a, b);
}
template <bool kLargest>
__m128i extreme_of(__m128i a, __m128i b, uint8_t) {
  return kLargest ? _mm_max_epu8(a, b) : _mm_min_epu8(a, b);
}

__m128i all_of(int16_t number) { return _mm_set1_epi16(number); }
__m128i all_of(uint8_t number) { return _mm_set1_epi8(static_cast<char>(number)); }

// As many bytes of ones as wanted, from where the sixteenth byte before the middle is left.
alignas(16) constexpr auto kKeep = [] {
  std::array<uint8_t, 32> bytes{};
  std::fill(bytes.begin(), bytes.begin() + 16, uint8_t{0xff});
  return bytes;
}();

template <bool kLargest, class Number>
Number extreme_lane(__m128i lanes, int columns) {
  const auto* const keep_from = kKeep.data() + 16 - columns * static_cast<int>(sizeof(Number));
  const __m128i keep = _mm_loadu_si128(reinterpret_cast<const __m128i*>(keep_from));
  const __m128i worst = all_of(worst_of<Number>(kLargest));
  lanes = _mm_or_si128(_mm_and_si128(keep, lanes), _mm_andnot_si128(keep, worst));
  lanes = extreme_of<kLargest>(lanes, _mm_shuffle_epi32(lanes, _MM_SHUFFLE(1, 0, 3, 2)), Number{});
  lanes = extreme_of<kLargest>(lanes, _mm_shuffle_epi32(lanes, _MM_SHUFFLE(2, 3, 0, 1)), Number{});
  lanes = extreme_of<kLargest>(lanes, _mm_srli_epi32(lanes, 16), Number{});
  if (sizeof(Number) == 1) lanes = extreme_of<kLargest>(lanes, _mm_srli_epi16(lanes, 8), Number{});
  return static_cast<Number>(_mm_cvtsi128_si32(lanes));
}

// Of at most 3 x 3 rows, as they are mostly asked for: some twice, rather than as many as there are, which no
// processor foresees.
template <bool kLargest, class Number>
int extreme_of_few(const Number* corner, const Size3& counts, const Size3& blocks) {
  const int64_t layer = int64_t{blocks[1]} * blocks[0];
  const int64_t rows[] = {0, counts[1] > 1 ? blocks[0] : 0, (counts[1] - 1) * int64_t{blocks[0]}};
  const int64_t layers[] = {0, counts[2] > 1 ? layer : 0, (counts[2] - 1) * layer};
  __m128i lanes = all_of(worst_of<Number>(kLargest));
  for (const int64_t z : layers)
    for (const int64_t y : rows) {
      const auto* const row = reinterpret_cast<const __m128i*>(corner + z + y);
      lanes = extreme_of<kLargest>(lanes, _mm_loadu_si128(row), Number{});
    }
  return extreme_lane<kLargest, Number>(lanes, counts[0]);
}

template <bool kLargest, class Number>
int extreme(const Number* corner, const Size3& counts, const Size3& blocks) {
  constexpr int kLanes = kLanesOf<Number>;
  if (counts[0] <= kLanes && counts[1] <= 3 && counts[2] <= 3)
    return extreme_of_few<kLargest>(corner, counts, blocks);
  Number best = worst_of<Number>(kLargest);
  for (int x = 0; x < counts[0]; x += kLanes) {
    __m128i lanes = all_of(best);
    for (int z = 0; z < counts[2]; ++z) {
      const Number* row = corner + x + int64_t{z} * blocks[1] * blocks[0];
      for (int y = 0; y < counts[1]; ++y, row += blocks[0])
        lanes = extreme_of<kLargest>(lanes, _mm_loadu_si128(reinterpret_cast<const __m128i*>(row)), Number{});
    }
    best = extreme_lane<kLargest, Number>(lanes, std::min(counts[0] - x, kLanes));
  }
  return best;
}

template <bool kLargest, class Number>
void merge_eights(const Number* from, const Size3& blocks, Number* to, const Size3& halves) {
  const auto better = [](Number a, Number b) { return kLargest ? std::max(a, b) : std::min(a, b); };
  const size_t count = static_cast<size_t>(blocks[0]);
  const auto row = [&](int y, int z) {
    return from + (int64_t{std::min(z, blocks[2] - 1)} * blocks[1] + std::min(y, blocks[1] - 1)) * blocks[0];
  };
  std::vector<Number> merged(count + 1);
  for (int z = 0; z < halves[2]; ++z)
    for (int y = 0; y < halves[1]; ++y, to += halves[0]) {
      const Number *a = row(2 * y, 2 * z), *b = row(2 * y + 1, 2 * z);
      const Number *c = row(2 * y, 2 * z + 1), *d = row(2 * y + 1, 2 * z + 1);
      for (size_t x = 0; x < count; ++x) merged[x] = better(better(a[x], b[x]), better(c[x], d[x]));
      merged[count] = merged[count - 1];
      for (size_t x = 0; x < static_cast<size_t>(halves[0]); ++x)
        to[x] = better(merged[2 * x], merged[2 * x + 1]);
    }
}

}  // namespace

Levels levels_of(const Array& array, const Storage& storage) {
  Levels levels{false, storage.lowest, -std::ilogb(storage.step)};
  const bool apart = is_byte(array.type) && storage.step <= 1;
  levels.used = apart && levels.above(storage.highest) <= UINT8_MAX;
  return levels;
}

BlockTable::BlockTable(const Size3& size, const Size3& shift, bool largest, const Levels& levels)
    : shift_(shift), blocks_(block_counts(size, shift)), largest_(largest), levels_(levels) {
  // Reads go on past the last number.
  const size_t numbers = static_cast<size_t>(product(blocks_));
  levels.used ? bytes_.resize(numbers + kLanesOf<uint8_t>) : words_.resize(numbers + kLanesOf<int16_t>);
}

uint64_t BlockTable::bytes(const Size3& size, const Size3& shift, const Levels& levels) {
  return product(block_counts(size, shift)) * (levels.used ? 1 : sizeof(int16_t));
}

void BlockTable::set_row(int y, int z, const int16_t* samples) {
  const size_t begin = row_begin(y, z), count = static_cast<size_t>(blocks_[0]);
  if (!levels_.used) {
    std::copy(samples, samples + count, words_.begin() + static_cast<ptrdiff_t>(begin));
    return;
  }
  uint8_t* const row = bytes_.data() + begin;
  const Levels levels = levels_;
  if (largest_)
    for (size_t i = 0; i < count; ++i) row[i] = static_cast<uint8_t>(levels.above(samples[i]));
  else
    for (size_t i = 0; i < count; ++i) row[i] = static_cast<uint8_t>(levels.below(samples[i]));
}

void BlockTable::set_from_half(const BlockTable& half) {
  const auto set = [&](const auto& from, auto& to) {
    largest_ ? merge_eights<true>(from.data(), half.blocks_, to.data(), blocks_)
             : merge_eights<false>(from.data(), half.blocks_, to.data(), blocks_);
  };
  levels_.used ? set(half.bytes_, bytes_) : set(half.words_, words_);
}

int BlockTable::over(const Size3& low, const Size3& high) const {
  Size3 first, counts;
  for (size_t a = 0; a < 3; ++a) {
    first[a] = low[a] >> shift_[a];
    counts[a] = (high[a] >> shift_[a]) - first[a] + 1;
  }
  const size_t corner = row_begin(first[1], first[2]) + static_cast<size_t>(first[0]);
  const auto find = [&](const auto* at) {
    return largest_ ? extreme<true>(at, counts, blocks_) : extreme<false>(at, counts, blocks_);
  };
  return levels_.used ? levels_.sample(find(bytes_.data() + corner)) : find(words_.data() + corner);
}

}  // namespace render
