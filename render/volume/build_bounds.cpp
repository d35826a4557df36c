// Making the tables of blocks: every row of the volume is looked at once or twice.
#include <algorithm>

#include "view/lanes.h"
#include "volume/bounds.h"

namespace render {
namespace {

constexpr int kLargestShift = 2, kCoarsestShift = 5;
constexpr int kLayersPerTask = 4;  // of blocks

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

// Each number becomes the extreme of itself and of the one `ahead` of it.
RENDER_IN_LANES void merge_ahead(size_t ahead, size_t count, int16_t* high, int16_t* low) {
#pragma GCC ivdep
  for (size_t x = 0; x < count; ++x) {
    high[x] = std::max(high[x], high[x + ahead]);
    low[x] = std::min(low[x], low[x + ahead]);
  }
}

// What is gathered at the places of every edge-th voxel and the next; the usual edge is known to the
// compiler.
template <size_t kEdge>
void pick(size_t blocks, int16_t* high, int16_t* low, size_t other_edge = 0) {
  const size_t edge = kEdge > 0 ? kEdge : other_edge;
  for (size_t b = 0; b < blocks; ++b) {
    high[b] = std::max(high[b * edge], high[b * edge + 1]);
    low[b] = std::min(low[b * edge], low[b * edge + 1]);
  }
}

// The extremes of some rows, voxel by voxel; beyond the last voxel there are places for what is none.
struct Extremes {
  static constexpr size_t kSpare = 2 << kCoarsestShift;
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
  // Puts those of voxels 2^shift * b .. 2^shift * (b + 1) at b.
  void gather(int shift, size_t blocks) {
    const size_t edge = size_t{1} << shift;
    for (size_t ahead = 1; ahead < edge; ahead *= 2)
      merge_ahead(ahead, count + edge - ahead, high.data(), low.data());
    edge == 4 ? pick<4>(blocks, high.data(), low.data()) : pick<0>(blocks, high.data(), low.data(), edge);
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
  void store(int y, int z, Extremes& found) const {
    found.gather(shift_[0], static_cast<size_t>(largest_.blocks()[0]));
    largest_.set_row(y, z, found.high.data());
    smallest_.set_row(y, z, found.low.data());
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
