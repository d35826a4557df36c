// Making the tables of blocks: every row of the volume is looked at once or twice.
#include <algorithm>
#include <array>

#include "view/lanes.h"
#include "volume/bounds.h"

namespace render {
namespace {

constexpr int kLargestShift = 2, kCoarsestShift = 5;
constexpr int kLayersPerTask = 4;                          // of blocks
constexpr size_t kMostBlocks = kMaxSize >> kLargestShift;  // along a row

RENDER_IN_LANES void merge_row(const int16_t* row, size_t count, int16_t* high, int16_t* low) {
  for (size_t x = 0; x < count; ++x) {
    high[x] = std::max(high[x], row[x]);
    low[x] = std::min(low[x], row[x]);
  }
}

RENDER_IN_LANES void merge_extremes(const int16_t* more_high, const int16_t* more_low, size_t count,
                                    int16_t* high, int16_t* low) {
  for (size_t x = 0; x < count; ++x) {
    high[x] = std::max(high[x], more_high[x]);
    low[x] = std::min(low[x], more_low[x]);
  }
}

// The extremes of numbers edge * b .. edge * b + edge, at b.
template <size_t kEdge>
void gather(size_t blocks, size_t other_edge, const int16_t* high, const int16_t* low,
            int16_t* __restrict highest, int16_t* __restrict lowest) {
  const size_t edge = kEdge > 0 ? kEdge : other_edge;
  for (size_t b = 0; b < blocks; ++b) {
    highest[b] = high[b * edge];
    lowest[b] = low[b * edge];
    for (size_t i = 1; i <= edge; ++i) {
      highest[b] = std::max(highest[b], high[b * edge + i]);
      lowest[b] = std::min(lowest[b], low[b * edge + i]);
    }
  }
}

// The extremes of some rows, voxel by voxel; beyond the last voxel there are places for what is none.
struct Extremes {
  static constexpr size_t kSpare = (1 << kCoarsestShift) + 1;
  explicit Extremes(int columns)
      : count(static_cast<size_t>(columns)), high(count + kSpare), low(count + kSpare) {
    clear();
  }
  void clear() {
    std::fill(high.begin(), high.end(), INT16_MIN);
    std::fill(low.begin(), low.end(), INT16_MAX);
  }
  void add(const std::vector<int16_t>& row) { merge_row(row.data(), count, high.data(), low.data()); }
  void add(const Extremes& more) {
    merge_extremes(more.high.data(), more.low.data(), count, high.data(), low.data());
  }
  size_t count;
  std::vector<int16_t> high, low;
};

// Both tables of one size of blocks, some layers at a time.
class LayerBuilder {
 public:
  LayerBuilder(const Size3& size, const Size3& shift, const SampleRowReader& read_row, BlockTable& largest,
               BlockTable& smallest)
      : size_(size), shift_(shift), read_row_(read_row), largest_(largest), smallest_(smallest) {}

  // Layers first .. end - 1. The slice that two layers share is the last of one and the first of the next.
  void build(int first, int end) const {
    const int depth = 1 << shift_[2], last_slice = std::min(end * depth, size_[2] - 1);
    Extremes slice(size_[0]);
    std::vector<int16_t> row(static_cast<size_t>(size_[0]));
    std::vector<Extremes> layer(static_cast<size_t>(largest_.blocks()[1]), slice);
    for (int z = first * depth; z <= last_slice; ++z)
      for (int y = 0; y < largest_.blocks()[1]; ++y) {
        Extremes& all = layer[static_cast<size_t>(y)];
        find_slice(y, z, row, slice);
        all.add(slice);
        if (z % depth == 0) {
          if (z > first * depth) store(y, z / depth - 1, all);
          all = slice;
        }
        if (z == size_[2] - 1 && z / depth < end) store(y, z / depth, all);
      }
  }

 private:
  void find_slice(int block, int z, std::vector<int16_t>& row, Extremes& found) const {
    const int edge = 1 << shift_[1];
    found.clear();
    for (int y = block * edge; y <= std::min(block * edge + edge, size_[1] - 1); ++y) {
      read_row_(y, z, row.data());
      found.add(row);
    }
  }
  void store(int y, int z, const Extremes& found) const {
    const size_t edge = size_t{1} << shift_[0], blocks = static_cast<size_t>(largest_.blocks()[0]);
    std::array<int16_t, kMostBlocks> highest, lowest;
    // The usual edge is known to the compiler.
    (edge == 4 ? gather<4> : gather<0>)(blocks, edge, found.high.data(), found.low.data(), highest.data(),
                                        lowest.data());
    largest_.set_row(y, z, highest.data());
    smallest_.set_row(y, z, lowest.data());
  }

  const Size3 &size_, &shift_;
  const SampleRowReader& read_row_;
  BlockTable &largest_, &smallest_;
};

Size3 shifts(int shift, const Levels& levels) { return {shift, shift, levels.used ? shift - 1 : shift}; }

}  // namespace

Bounds make_bounds(const Size3& size, const Levels& levels, const SampleRowReader& read_row, Work& work) {
  Bounds bounds;
  const uint64_t voxels =
      static_cast<uint64_t>(size[0]) * static_cast<uint64_t>(size[1]) * static_cast<uint64_t>(size[2]);
  const uint64_t limit = voxels * sizeof(int16_t) * 3 / 100;
  for (int shift = kLargestShift; shift <= kCoarsestShift; ++shift) {
    const Size3 fine = shifts(shift, levels), coarse = shifts(shift + 1, levels);
    if (BlockTable::bytes(size, fine, levels) + 2 * BlockTable::bytes(size, coarse, levels) > limit) continue;
    bounds.largest = BlockTable(size, fine, true, levels);
    BlockTable smallest(size, fine, false, levels);
    const LayerBuilder builder(size, fine, read_row, bounds.largest, smallest);
    const int layers = bounds.largest.blocks()[2];
    work.spread((layers + kLayersPerTask - 1) / kLayersPerTask, 1, [&](int task) {
      builder.build(task * kLayersPerTask, std::min((task + 1) * kLayersPerTask, layers));
    });
    bounds.coarse_largest = BlockTable(size, coarse, true, levels);
    bounds.smallest = BlockTable(size, coarse, false, levels);
    bounds.coarse_largest.set_from_half(bounds.largest);
    bounds.smallest.set_from_half(smallest);
    break;
  }
  return bounds;
}

}  // namespace render
