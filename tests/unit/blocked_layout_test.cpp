// Which element of a blocked buffer a voxel is, seen through every caster of blocked volumes.
#include <zox_volume_layout.h>

#include "cases.h"
#include "small_batch.h"
#include "small_volumes.h"

namespace zox_test {
namespace {

struct Place {
  int size;
  int x, y, z;
  size_t index;  // in elements
};

// Cells hold 4 x 4 x 2 voxels = 32, bricks 16 x 16 x 16 cells = 131072 = 0x20000.
constexpr Place kPlaces[] = {
    // Inside a cell: x fastest, then y, then z.
    {64, 1, 0, 0, 1},
    {64, 0, 1, 0, 4},
    {64, 0, 0, 1, 16},
    {64, 1, 1, 1, 21},
    {64, 3, 3, 1, 31},
    // Cells inside a brick.
    {64, 4, 0, 0, 32},
    {64, 0, 4, 0, 512},
    {64, 0, 0, 2, 8192},
    {64, 62, 0, 0, 15 * 32 + 2},
    {64, 0, 62, 0, 15 * 512 + 2 * 4},
    {64, 0, 0, 30, 15 * 8192},
    // One brick a row below size 128.
    {64, 0, 0, 32, 0x20000},
    {100, 0, 0, 32, 0x20000},
    {127, 0, 0, 32, 0x20000},
    // The next brick along x, whatever the size; along y after the row's bricks, along z after the slab's.
    {128, 63, 0, 0, 0x1E3},
    {128, 64, 0, 0, 0x20000},
    {128, 0, 64, 0, 2 * 0x20000},
    {128, 0, 0, 32, 4 * 0x20000},
    {128, 64, 64, 32, 7 * 0x20000},
    {256, 63, 0, 0, 0x1E3},
    {256, 64, 0, 0, 0x20000},
    {256, 0, 64, 0, 0x80000},
    {256, 0, 0, 32, 0x200000},
    {256, 0, 0, 64, 0x400000},
    {256, 200, 130, 33, 0x20000 * (3 + 4 * (2 + 4)) + 2 * 32 + 2 * 4 + 16},
    // Between two powers of two the lower one counts.
    {384, 64, 0, 0, 0x20000},
    {384, 0, 64, 0, 0x80000},
    {384, 0, 0, 32, 0x200000},
    {255, 0, 64, 0, 2 * 0x20000},
    // The largest size: 32 bricks a row.
    {2048, 0, 64, 0, 0x400000},
    {2048, 0, 0, 32, 0x8000000},
    {2048, 2046, 0, 0, 0x3E01E2},
    {2048, 0, 2046, 0, 31 * 0x400000 + 15 * 512 + 2 * 4},
};

// What programs lay volumes out by names the elements that the kernels read below.
TEST(BlockedPlaces, AreThoseOfTheLayoutHeader) {
  for (const Place& place : kPlaces) {
    if ((place.size & (place.size - 1)) != 0 || place.size < 64) continue;
    EXPECT_EQ(place.index, zox_blocked_index(place.size, place.x, place.y, place.z))
        << "size " << place.size << ", voxel " << place.x << ", " << place.y << ", " << place.z;
  }
}

class BlockedLayout : public CasterTest {};

TEST_P(BlockedLayout, EveryVoxelIsItsElement) {
  for (const Place& place : kPlaces) {
    Blocked blocked(caster().element_size(), place.size, place.z + 2);
    blocked.set_element(place.index, 77);
    Batch batch(caster().element_size());
    batch.add({double(place.x), double(place.y), double(place.z)}, {0, 0, 0}, 1);
    EXPECT_EQ(batch.run(cast(), blocked.volume()), ZOX_STS_NO_ERROR);
    EXPECT_EQ(batch.at(0, 0), 77) << "size " << place.size << ", voxel " << place.x << ", " << place.y << ", "
                                  << place.z;
  }
}

INSTANTIATE_FOR_CASTERS(BlockedLayout, [](const Caster& c) { return c.blocked(); });

class BlockedNeighbours : public CasterTest {
 protected:
  // The sample halfway between a voxel and its neighbours where only the given element is not 0.
  int halfway(int size, Point at, size_t index, int value) {
    Blocked blocked(caster().element_size(), size, 64);
    blocked.set_element(index, value);
    Batch batch(caster().element_size());
    batch.add(at, {0, 0, 0}, 1);
    EXPECT_EQ(batch.run(cast(), blocked.volume()), ZOX_STS_NO_ERROR);
    return batch.at(0, 0);
  }
};

TEST_P(BlockedNeighbours, LieInTheNextCell) {
  EXPECT_EQ(halfway(64, {3.5, 0, 0}, 32, 80), 40);
  EXPECT_EQ(halfway(64, {0, 3.5, 0}, 512, 80), 40);
  EXPECT_EQ(halfway(64, {0, 0, 1.5}, 8192, 80), 40);
  EXPECT_EQ(halfway(64, {3.5, 3.5, 1.5}, 32 + 512 + 8192, 80), 10);
}

TEST_P(BlockedNeighbours, LieInTheNextBrick) {
  EXPECT_EQ(halfway(128, {63.5, 0, 0}, 0x20000, 80), 40);
  EXPECT_EQ(halfway(128, {0, 63.5, 0}, 2 * 0x20000, 80), 40);
  EXPECT_EQ(halfway(128, {0, 0, 31.5}, 4 * 0x20000, 80), 40);
  EXPECT_EQ(halfway(128, {63.5, 63.5, 31.5}, 7 * 0x20000, 80), 10);
  EXPECT_EQ(halfway(128, {63.5, 63.5, 31.5}, 15 * (32 + 512 + 8192) + 31, 80), 10);
  EXPECT_EQ(halfway(256, {127.5, 0, 31.5}, (2 + 16) * 0x20000, 80), 20);
}

INSTANTIATE_FOR_CASTERS(BlockedNeighbours, [](const Caster& c) { return c.blocked() && c.trilinear(); });

}  // namespace
}  // namespace zox_test
