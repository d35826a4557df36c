// Copies in bricks, written a cell (a line of the cache) at a time.
#include <zox_volume_layout.h>

#include <algorithm>
#include <cstring>

#include "volume/array_passes.h"
#include "volume/volume.h"

namespace render {
namespace {

constexpr int kBrickEdge = 64, kBrickDepth = 32;
constexpr int kCellEdge = 4, kCellDepth = 2;

int grid_edge(const Size3& size) {
  int edge = kBrickEdge;
  while (edge < std::max(size[0], size[1])) edge *= 2;
  return edge;
}

// One layer of bricks more than needed where the last is full, so that every voxel has a next in z.
uint64_t grid_voxels(const Size3& size) {
  const uint64_t edge = static_cast<uint64_t>(grid_edge(size));
  return edge * edge * static_cast<uint64_t>(size[2] / kBrickDepth + 1) * kBrickDepth;
}

uint64_t rounded_up(int value, int to) { return static_cast<uint64_t>((value + to - 1) / to * to); }

// The 4 x 4 x 2 cells of rows y .. y + 3 of slices z and z + 1; beyond the volume the last row and slice go
// on.
class CellRow {
 public:
  CellRow(const Array& array, const Volume& volume)
      : array_(array), volume_(volume), pitch_(rounded_up(array.size[0], kCellEdge)), samples_(pitch_ * 8) {}

  void write(int y, int z, int16_t* data) {
    for (int i = 0; i < 8; ++i)
      fill(i, std::min(y + (i & 3), array_.size[1] - 1), std::min(z + (i >> 2), array_.size[2] - 1));
    const Bricks& bricks = volume_.bricks;
    int16_t* const row = data + (bricks.y_term(y) | bricks.z_term(z));
    for (int x = 0; x < array_.size[0]; x += kCellEdge)
      for (size_t i = 0; i < 8; ++i)
        std::memcpy(row + bricks.x_term(x) + i * 4, samples_.data() + i * pitch_ + x, 8);
  }

 private:
  void fill(int i, int y, int z) {
    int16_t* const row = samples_.data() + static_cast<size_t>(i) * pitch_;
    sample_row(array_, volume_.storage, y, z, row);
    const size_t columns = static_cast<size_t>(array_.size[0]);
    for (size_t x = 0; x < columns; ++x) row[x] = to_guarded(row[x], volume_.bricks.middle);
    for (size_t x = columns; x < pitch_; ++x) row[x] = row[columns - 1];
  }

  const Array& array_;
  const Volume& volume_;
  size_t pitch_;
  std::vector<int16_t> samples_;
};

}  // namespace

uint64_t Bricks::x_term(int x) const { return zox_blocked_x_term(x); }
uint64_t Bricks::y_term(int y) const { return zox_blocked_y_term(edge, y); }
uint64_t Bricks::z_term(int z) const { return zox_blocked_z_term(edge, z); }

// Four voxels of a row lie together in a cell, the next four a cell further on.
void Bricks::read_row(int y, int z, int columns, int16_t* samples) const {
  const int16_t* row = data + (y_term(y) | z_term(z));
  const int16_t shift = static_cast<int16_t>(middle);
  int x = 0;
  for (; x + kCellEdge <= columns; x += kCellEdge) {
    const int16_t* cell = row + x_term(x);
    for (int i = 0; i < kCellEdge; ++i) samples[x + i] = static_cast<int16_t>(from_guarded(cell[i]) + shift);
  }
  for (; x < columns; ++x) samples[x] = static_cast<int16_t>(from_guarded(row[x_term(x)]) + shift);
}

// Only the bricks that hold voxels are ever touched.
uint64_t bricks_bytes(const Size3& size) {
  return rounded_up(size[0], kBrickEdge) * rounded_up(size[1], kBrickEdge) *
         rounded_up(size[2], kBrickDepth) * sizeof(int16_t);
}

void copy_bricks(const Array& array, Volume& volume, Work& work) {
  volume.layout = Layout::kBricks;
  volume.bricks.edge = grid_edge(array.size);
  volume.bricks.middle = guard_middle(volume.storage);
  volume.voxel_bytes = bricks_bytes(array.size);
  volume.memory = Memory(grid_voxels(array.size) * sizeof(int16_t));
  auto* const data = reinterpret_cast<int16_t*>(volume.memory.data());
  volume.bricks.data = data;
  for (size_t a = 0; a < 2; ++a) volume.has_next[a] = array.size[a] < volume.bricks.edge;
  volume.has_next[2] = true;
  work.spread((array.size[2] + kCellDepth - 1) / kCellDepth, 0.8, [&](int layer) {
    CellRow cells(array, volume);
    for (int y = 0; y < array.size[1]; y += kCellEdge) cells.write(y, layer * kCellDepth, data);
  });
}

}  // namespace render
