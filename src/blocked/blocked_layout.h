// Where a voxel of a blocked volume lies: bricks of 64 x 64 x 32 voxels made of cells of
// 4 x 4 x 2. An element number has, from bit 0: x (2 bits), y (2), z (1) inside the cell, the
// cell inside the brick (4 bits each of x, y, z), the brick.
#pragma once

#include <stdint.h>

#include "numbers/lanes.h"
#include "zox_volume.h"

namespace zox::ZOX_SET {
namespace {

// The three index tables, computed: in vectors that is quicker than looking them up. y and z
// carry no brick number; the shifts of BlockedVolume place it.
inline uint32_t zox_indx(uint32_t x) { return (x & 3) | ((x >> 2) & 15) << 5 | (x >> 6) << 17; }
inline uint32_t zox_indy(uint32_t y) { return (y & 3) << 2 | ((y >> 2) & 15) << 9; }
inline uint32_t zox_indz(uint32_t z) { return (z & 1) << 4 | ((z >> 1) & 15) << 13; }

template <class Element>
struct BlockedVolume {
  const Element* data;
  int y_shift;
  int z_shift;

  explicit BlockedVolume(const zox_Volume& volume) : data(static_cast<const Element*>(volume.data)) {
    int bits = 0;  // of the number of bricks along x, which is a power of two
    for (int bricks = volume.size >> 7; bricks != 0; bricks >>= 1) ++bits;
    y_shift = (bits + 11) & 31;
    z_shift = (2 * bits + 12) & 31;
  }

  // Numbers are unsigned, whatever type carries them.
  const Element* at(int number) const { return data + static_cast<uint32_t>(number); }

  // The element number of a voxel is the OR of its three terms; a neighbour's comes by
  // exchanging one term (XOR with both).
  uint32_t x_term(int x) const { return zox_indx(static_cast<uint32_t>(x)); }
  uint32_t y_term(int y) const {
    uint32_t u = static_cast<uint32_t>(y);
    return zox_indy(u) | (u & ~63u) << y_shift;
  }
  uint32_t z_term(int z) const {
    uint32_t u = static_cast<uint32_t>(z);
    return zox_indz(u) | (u & ~31u) << z_shift;
  }
};

}  // namespace
}  // namespace zox::ZOX_SET
