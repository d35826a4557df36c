// The largest and smallest samples of blocks of voxels: what no sample within can pass.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "cast/work.h"
#include "volume/array.h"
#include "volume/storage.h"

namespace render {

// Samples in bytes, where all of them lie so far apart that a byte tells them: those of voxels of 8 bits.
struct Levels {
  bool used = false;
  int lowest = 0, shift = 0;  // level l is the sample lowest + l * 2^shift

  int sample(int level) const { return lowest + (level << shift); }
  // The next level, which only samples between levels need.
  int above(int sample) const { return (sample - lowest + (1 << shift) - 1) >> shift; }
  int below(int sample) const { return (sample - lowest) >> shift; }
};
Levels levels_of(const Array& array, const Storage& storage);

// One number a block. A block of edges e = 2^shift speaks of the voxels e * b .. e * b + e along each axis,
// the first of the next block included: of all that samples in its cells are interpolated from.
class BlockTable {
 public:
  BlockTable() = default;
  BlockTable(const Size3& size, const Size3& shift, bool largest, const Levels& levels);
  static uint64_t bytes(const Size3& size, const Size3& shift, const Levels& levels);

  bool empty() const { return bytes() == 0; }
  uint64_t bytes() const { return words_.size() * sizeof(int16_t) + bytes_.size(); }
  const Size3& blocks() const { return blocks_; }

  // The largest (or smallest) over the cells low .. high, which lie within the volume.
  int over(const Size3& low, const Size3& high) const;

  // Sets a row of blocks along x.
  void set_row(int y, int z, const int16_t* samples);
  // Sets all from blocks half as wide, eight of which make one: the voxels that they speak of overlap in the
  // same way.
  void set_from_half(const BlockTable& half);

 private:
  size_t row_begin(int y, int z) const {
    return static_cast<size_t>((int64_t{z} * blocks_[1] + y) * blocks_[0]);
  }

  Size3 shift_{}, blocks_{};
  bool largest_ = true;
  Levels levels_;
  // One of both, by levels_.used.
  std::vector<int16_t> words_;
  std::vector<uint8_t> bytes_;
};

struct Bounds {
  BlockTable largest, coarse_largest, smallest;
  bool empty() const { return largest.empty(); }
  uint64_t bytes() const { return largest.bytes() + coarse_largest.bytes() + smallest.bytes(); }
};

using SampleRowReader = std::function<void(int y, int z, int16_t* samples)>;

// Largest samples of blocks of 4 x 4 x 4 voxels, with levels of 4 x 4 x 2, and of blocks twice as wide; of
// the latter the smallest too, which are seldom asked for: 2 % of the volume. Volumes so thin that the tables
// would take more than 3 % get coarser ones or none.
Bounds make_bounds(const Size3& size, const Levels& levels, const SampleRowReader& read_row, Work& work);

}  // namespace render
