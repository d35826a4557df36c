// Where voxel (x, y, z) of a blocked volume lies, and the two ways to sample one.
#pragma once

#include "arithmetic.h"
#include "interpolation.h"

namespace reference {

// Bricks of 64 x 64 x 32 voxels hold cells of 4 x 4 x 2 voxels. An element index has the place in
// the cell in bits 0-4 (x, y, z), the cell's place in its brick in bits 5-16 (x, y, z) and the
// brick number above.
class BlockedLayout {
 public:
  // The size must not be negative. Sizes below 128 are one brick wide, others a power of two.
  explicit BlockedLayout(int32_t size) {
    int bits = 0;
    for (int32_t rest = size >> 7; rest != 0; rest >>= 1) ++bits;
    y_shift_ = (bits + 11) & 31;
    z_shift_ = (2 * bits + 12) & 31;
  }

  static uint32_t x_term(int32_t x) {
    const uint32_t i = static_cast<uint32_t>(x);
    return (i & 3) | ((i >> 2) & 15) << 5 | (i >> 6) << 17;
  }
  uint32_t y_term(int32_t y) const {
    const uint32_t i = static_cast<uint32_t>(y);
    return (i & 3) << 2 | ((i >> 2) & 15) << 9 | (i & ~63u) << y_shift_;
  }
  uint32_t z_term(int32_t z) const {
    const uint32_t i = static_cast<uint32_t>(z);
    return (i & 1) << 4 | ((i >> 1) & 15) << 13 | (i & ~31u) << z_shift_;
  }
  uint32_t index(int32_t x, int32_t y, int32_t z) const { return x_term(x) | y_term(y) | z_term(z); }

 private:
  int y_shift_;
  int z_shift_;
};

template <typename Voxel>
class BlockedVolume {
 public:
  explicit BlockedVolume(const zox_Volume& volume)
      : data_(static_cast<const Voxel*>(volume.data)), layout_(volume.size) {}

  Voxel voxel(int32_t x, int32_t y, int32_t z) const { return data_[layout_.index(x, y, z)]; }

  // A neighbour's index exchanges one term of the index for the next coordinate's.
  Corners corners(int32_t x, int32_t y, int32_t z) const {
    const uint32_t base = layout_.index(x, y, z);
    const uint32_t to_x[2] = {0, BlockedLayout::x_term(x) ^ BlockedLayout::x_term(wrap_add(x, 1))};
    const uint32_t to_y[2] = {0, layout_.y_term(y) ^ layout_.y_term(wrap_add(y, 1))};
    const uint32_t to_z[2] = {0, layout_.z_term(z) ^ layout_.z_term(wrap_add(z, 1))};
    Corners corners;
    for (int l = 0; l < 2; ++l) {
      for (int j = 0; j < 2; ++j) {
        for (int i = 0; i < 2; ++i) corners.at[l][j][i] = data_[base ^ to_x[i] ^ to_y[j] ^ to_z[l]];
      }
    }
    return corners;
  }

  // Trilinear at a position in doubles; the low bits of the truncated sum are the voxel.
  Voxel trilinear(const double position[3]) const {
    const int32_t x = truncate(position[0]);
    const int32_t y = truncate(position[1]);
    const int32_t z = truncate(position[2]);
    return static_cast<Voxel>(
        interpolate_terms(corners(x, y, z), position[0] - x, position[1] - y, position[2] - z));
  }

 private:
  const Voxel* data_;
  BlockedLayout layout_;
};

}  // namespace reference
