// The largest and smallest samples of blocks of voxels: what no sample within can pass.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "cast/work.h"
#include "volume/array.h"

namespace render {

// One number a block. A block of edge e = 2^shift speaks of the voxels e * b .. e * b + e along each axis,
// the first of the next block included: of all that samples in its cells are interpolated from.
class BlockTable {
 public:
  using RowReader = std::function<void(int y, int z, int16_t* samples)>;
  static uint64_t bytes(const Size3& size, int shift);

  bool empty() const { return values_.empty(); }
  uint64_t bytes() const { return values_.size() * sizeof(int16_t); }

  // The largest (or smallest) over the cells low .. high, which lie within the volume.
  int over(const Size3& low, const Size3& high) const;

  // Of blocks twice as wide.
  BlockTable halved(const Size3& size) const;
  friend void build_layer(const Size3& size, int layer, const RowReader& read_row, BlockTable& largest,
                          BlockTable& smallest);
  friend void build_tables(const Size3& size, int shift, const RowReader& read_row, Work& work,
                           BlockTable& largest, BlockTable& smallest);

 private:
  void resize(const Size3& size, int shift, bool largest);
  int16_t& at(int x, int y, int z);

  int shift_ = 0;
  bool largest_ = true;
  Size3 blocks_{};
  std::vector<int16_t> values_;
};

struct Bounds {
  BlockTable largest, coarse_largest, smallest;
  bool empty() const { return largest.empty(); }
  uint64_t bytes() const { return largest.bytes() + coarse_largest.bytes() + smallest.bytes(); }
};

// Largest samples of blocks of 4 and of 8 voxels an edge, smallest ones (seldom asked for) of 8: 2 % of the
// volume. Volumes so thin that the tables would take more than 3 % get coarser ones or none.
Bounds make_bounds(const Size3& size, const BlockTable::RowReader& read_row, Work& work);

}  // namespace render
