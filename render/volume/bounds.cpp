#include "volume/bounds.h"

#include <emmintrin.h>

#include <algorithm>

namespace render {
namespace {

constexpr int kLargestShift = 2, kCoarsestShift = 5;

Size3 block_counts(const Size3& size, int shift) {
  Size3 counts;
  for (size_t a = 0; a < 3; ++a) counts[a] = (size[a] + (1 << shift) - 1) >> shift;
  return counts;
}

// Extremes along rows, voxel by voxel.
void merge_rows(const int16_t* row, int count, int16_t* largest, int16_t* smallest) {
  for (int x = 0; x < count; ++x) {
    largest[x] = std::max(largest[x], row[x]);
    smallest[x] = std::min(smallest[x], row[x]);
  }
}

constexpr int kLanes = 8;

// Eight numbers are read at a time; what lies beyond the columns asked for is dropped at the end.
template <bool kLargest>
__m128i extreme_of(__m128i a, __m128i b) {
  return kLargest ? _mm_max_epi16(a, b) : _mm_min_epi16(a, b);
}

template <bool kLargest>
int extreme_lane(__m128i lanes, int columns) {
  alignas(16) static constexpr int16_t kKeep[2 * kLanes] = {-1, -1, -1, -1, -1, -1, -1, -1};
  const __m128i keep = _mm_loadu_si128(reinterpret_cast<const __m128i*>(kKeep + kLanes - columns));
  const __m128i worst = _mm_set1_epi16(kLargest ? INT16_MIN : INT16_MAX);
  lanes = _mm_or_si128(_mm_and_si128(keep, lanes), _mm_andnot_si128(keep, worst));
  lanes = extreme_of<kLargest>(lanes, _mm_shuffle_epi32(lanes, _MM_SHUFFLE(1, 0, 3, 2)));
  lanes = extreme_of<kLargest>(lanes, _mm_shuffle_epi32(lanes, _MM_SHUFFLE(2, 3, 0, 1)));
  lanes = extreme_of<kLargest>(lanes, _mm_srli_epi32(lanes, 16));
  return static_cast<int16_t>(_mm_cvtsi128_si32(lanes));
}

template <bool kLargest>
int extreme(const int16_t* corner, const Size3& counts, const Size3& blocks) {
  int best = kLargest ? INT16_MIN : INT16_MAX;
  for (int x = 0; x < counts[0]; x += kLanes) {
    __m128i lanes = _mm_set1_epi16(static_cast<int16_t>(best));
    for (int z = 0; z < counts[2]; ++z) {
      const int16_t* row = corner + x + int64_t{z} * blocks[1] * blocks[0];
      for (int y = 0; y < counts[1]; ++y, row += blocks[0])
        lanes = extreme_of<kLargest>(lanes, _mm_loadu_si128(reinterpret_cast<const __m128i*>(row)));
    }
    best = extreme_lane<kLargest>(lanes, std::min(counts[0] - x, kLanes));
  }
  return best;
}

}  // namespace

uint64_t BlockTable::bytes(const Size3& size, int shift) {
  const Size3 counts = block_counts(size, shift);
  return static_cast<uint64_t>(counts[0]) * static_cast<uint64_t>(counts[1]) *
         static_cast<uint64_t>(counts[2]) * sizeof(int16_t);
}

void BlockTable::resize(const Size3& size, int shift, bool largest) {
  shift_ = shift;
  largest_ = largest;
  blocks_ = block_counts(size, shift);
  values_.resize(bytes(size, shift) / sizeof(int16_t) + kLanes);  // reads go on past the last number
}

int16_t& BlockTable::at(int x, int y, int z) {
  return values_[static_cast<size_t>((int64_t{z} * blocks_[1] + y) * blocks_[0] + x)];
}

// One layer of blocks of both tables, which have one shift.
void build_layer(const Size3& size, int layer, const BlockTable::RowReader& read_row, BlockTable& largest,
                 BlockTable& smallest) {
  const int edge = 1 << largest.shift_;
  const size_t columns = static_cast<size_t>(size[0]);
  std::vector<int16_t> high(columns), low(columns), row(columns);
  for (int by = 0; by < largest.blocks_[1]; ++by) {
    std::fill(high.begin(), high.end(), INT16_MIN);
    std::fill(low.begin(), low.end(), INT16_MAX);
    for (int z = layer * edge; z <= std::min(layer * edge + edge, size[2] - 1); ++z)
      for (int y = by * edge; y <= std::min(by * edge + edge, size[1] - 1); ++y) {
        read_row(y, z, row.data());
        merge_rows(row.data(), size[0], high.data(), low.data());
      }
    for (int bx = 0; bx < largest.blocks_[0]; ++bx) {
      const int begin = bx * edge, end = std::min(begin + edge + 1, size[0]);
      largest.at(bx, by, layer) = *std::max_element(high.begin() + begin, high.begin() + end);
      smallest.at(bx, by, layer) = *std::min_element(low.begin() + begin, low.begin() + end);
    }
  }
}

void build_tables(const Size3& size, int shift, const BlockTable::RowReader& read_row, Work& work,
                  BlockTable& largest, BlockTable& smallest) {
  largest.resize(size, shift, true);
  smallest.resize(size, shift, false);
  work.spread(block_counts(size, shift)[2], 1,
              [&](int layer) { build_layer(size, layer, read_row, largest, smallest); });
}

// Eight blocks make one of the next table: the voxels that they speak of overlap in the same way.
BlockTable BlockTable::halved(const Size3& size) const {
  BlockTable half;
  half.resize(size, shift_ + 1, largest_);
  for (int z = 0; z < half.blocks_[2]; ++z)
    for (int y = 0; y < half.blocks_[1]; ++y)
      for (int x = 0; x < half.blocks_[0]; ++x) {
        const int e = 1 << half.shift_;
        const Size3 low = {x * e, y * e, z * e};
        const Size3 high = {std::min(low[0] + e, size[0]) - 1, std::min(low[1] + e, size[1]) - 1,
                            std::min(low[2] + e, size[2]) - 1};
        half.at(x, y, z) = static_cast<int16_t>(over(low, high));
      }
  return half;
}

int BlockTable::over(const Size3& low, const Size3& high) const {
  const int x0 = low[0] >> shift_, y0 = low[1] >> shift_, z0 = low[2] >> shift_;
  const int columns = (high[0] >> shift_) - x0 + 1, rows = (high[1] >> shift_) - y0 + 1;
  const int layers = (high[2] >> shift_) - z0 + 1;
  const int16_t* corner = values_.data() + (int64_t{z0} * blocks_[1] + y0) * blocks_[0] + x0;
  return largest_ ? extreme<true>(corner, {columns, rows, layers}, blocks_)
                  : extreme<false>(corner, {columns, rows, layers}, blocks_);
}

Bounds make_bounds(const Size3& size, const BlockTable::RowReader& read_row, Work& work) {
  Bounds bounds;
  const uint64_t voxels =
      static_cast<uint64_t>(size[0]) * static_cast<uint64_t>(size[1]) * static_cast<uint64_t>(size[2]);
  const uint64_t limit = voxels * sizeof(int16_t) * 3 / 100;
  for (int shift = kLargestShift; shift <= kCoarsestShift; ++shift) {
    if (BlockTable::bytes(size, shift) + 2 * BlockTable::bytes(size, shift + 1) > limit) continue;
    BlockTable smallest;
    build_tables(size, shift, read_row, work, bounds.largest, smallest);
    bounds.coarse_largest = bounds.largest.halved(size);
    bounds.smallest = smallest.halved(size);
    break;
  }
  return bounds;
}

}  // namespace render
