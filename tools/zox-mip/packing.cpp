#include "packing.h"

#include <zox_volume_check.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "failure.h"

namespace zox_mip {
namespace {

constexpr int kBrickEdge = 64;
constexpr int kBrickDepth = 32;
constexpr uint64_t kBrickVoxels = uint64_t{64} * 64 * 32;

// Where a voxel lies in the blocked buffer, one term per axis: cells of 4 x 4 x 2 voxels within bricks
// of 64 x 64 x 32, everything x first, then y, then z.
struct BlockedTerms {
  uint64_t bricks;  // along x, and along y

  static uint64_t bits(int value, int shift, int mask) {
    return static_cast<uint64_t>((value >> shift) & mask);
  }
  uint64_t x(int x) const {
    return bits(x, 0, 3) | bits(x, 2, 15) << 5 | static_cast<uint64_t>(x / kBrickEdge) * kBrickVoxels;
  }
  uint64_t y(int y) const {
    return bits(y, 0, 3) << 2 | bits(y, 2, 15) << 9 |
           static_cast<uint64_t>(y / kBrickEdge) * bricks * kBrickVoxels;
  }
  uint64_t z(int z) const {
    return bits(z, 0, 1) << 4 | bits(z, 1, 15) << 13 |
           static_cast<uint64_t>(z / kBrickDepth) * bricks * bricks * kBrickVoxels;
  }
};

template <class Voxel>
void copy_blocked(const Volume& volume, uint64_t bricks, Voxel* blocked) {
  const BlockedTerms terms{bricks};
  std::vector<uint64_t> x_terms;
  x_terms.reserve(static_cast<size_t>(volume.size[0]));
  for (int x = 0; x < volume.size[0]; ++x) x_terms.push_back(terms.x(x));
  const Voxel* voxel = reinterpret_cast<const Voxel*>(volume.voxels.get());
  for (int z = 0; z < volume.size[2]; ++z)
    for (int y = 0; y < volume.size[1]; ++y) {
      Voxel* row = blocked + (terms.y(y) | terms.z(z));
      for (const uint64_t x_term : x_terms) row[x_term] = *voxel++;
    }
}

}  // namespace

void PackedVolume::Free::operator()(void* block) const { std::free(block); }

PackedVolume::PackedVolume(Volume& volume, Layout layout) {
  if (layout == Layout::kBlocked)
    pack_blocks(volume);
  else
    point_at_slices(volume);
}

void PackedVolume::pack_blocks(Volume& volume) {
  // The grid's edge is a power of two.
  int edge = kBrickEdge;
  while (edge < std::max(volume.size[0], volume.size[1])) edge *= 2;
  const uint64_t bricks = static_cast<uint64_t>(edge / kBrickEdge);
  const uint64_t slabs = static_cast<uint64_t>((volume.size[2] + kBrickDepth - 1) / kBrickDepth);
  const uint64_t voxels = bricks * bricks * slabs * kBrickVoxels;
  if (voxels > uint64_t{1} << 32)
    fail("The volume is too large for the blocked layout, which holds 2^32 voxels; try --layout stack.");
  // From calloc, so that padding nobody reads costs no memory.
  blocks_.reset(std::calloc(voxels, voxel_bytes(volume.type)));
  if (!blocks_) throw std::bad_alloc();
  if (volume.type == VoxelType::kBytes)
    copy_blocked(volume, bricks, static_cast<uint8_t*>(blocks_.get()));
  else
    copy_blocked(volume, bricks, static_cast<int16_t*>(blocks_.get()));
  volume.voxels.reset();
  record_.data = blocks_.get();
  record_.size = edge;
  // The contract checker, if it is there, then sees to it that not even the padding is read in z.
  if (zox_check_blocked) zox_check_blocked(record_.data, volume.size[2]);
}

void PackedVolume::point_at_slices(const Volume& volume) {
  // One region whose z counts slices.
  static constexpr int32_t kFirstSlice = 0;
  static constexpr double kSlicesPerUnit = 1;
  const size_t row_bytes = static_cast<size_t>(volume.size[0]) * voxel_bytes(volume.type);
  const size_t slice_bytes = static_cast<size_t>(volume.size[1]) * row_bytes;
  const int depth = volume.size[2];
  for (int s = 0; s < depth; ++s)
    slices_.push_back(volume.voxels.get() + static_cast<size_t>(s) * slice_bytes);
  // Trilinear operations load one pointer more than there are slices.
  slices_.push_back(slices_.back());
  for (int y = 0; y < volume.size[1]; ++y)
    row_offsets_.push_back(static_cast<int32_t>(static_cast<size_t>(y) * row_bytes));
  bounds_[1] = depth - 1;
  record_.slices = slices_.data();
  record_.rowoffs = row_offsets_.data();
  record_.nslices = depth;
  record_.nregions = 1;
  record_.regslice = &kFirstSlice;
  record_.regbounds = bounds_;
  record_.regscale = &kSlicesPerUnit;
  if (zox_check_stack) zox_check_stack(record_.slices, volume.size[0], volume.size[1]);
}

}  // namespace zox_mip
