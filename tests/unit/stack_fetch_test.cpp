// Slice stacks: which byte, or bit, a voxel is.
#include "cases.h"
#include "guarded_buffer.h"
#include "small_batch.h"
#include "small_volumes.h"

namespace zox_test {
namespace {

using Ints = std::vector<int>;

// Parallel nearest casters on a volume of one region: by their own path, or, for the sake of a ray
// without samples far off in z, as all others.
enum Path { kShortest, kLists };

Batch rays_along_x(const Caster& caster, Path path, Point start, int count) {
  Batch batch(caster.element_size());
  batch.add(start, {1, 0, 0}, count);
  if (path == kLists) batch.add({start[0], start[1], start[2] + 1000}, {1, 0, 0}, 0);
  return batch;
}

class StackFetch : public CasterTest {};

TEST_P(StackFetch, RowsMayLieInAnyOrder) {
  for (Path path : {kShortest, kLists}) {
    Stack stack(caster(), 5, 6, 3);
    stack.set(2, 1, 1, 1).turn_upside_down();
    Batch up = rays_along_x(caster(), path, {1, 4, 1}, 3);
    EXPECT_EQ(up.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
    EXPECT_EQ(up.samples(0), (Ints{0, 1, 0}));
    Batch down = rays_along_x(caster(), path, {1, 1, 1}, 3);
    EXPECT_EQ(down.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
    EXPECT_EQ(down.samples(0), (Ints{0, 0, 0}));
  }
}

// Row offsets count bytes for every type of voxel: rows may start at an odd one.
TEST_P(StackFetch, RowOffsetsAreBytes) {
  std::vector<uint8_t> slice(100), below(100);
  slice[33 + 2 * static_cast<size_t>(caster().element_size())] = 1;
  if (caster().bit()) slice[33] = 0x20;
  const void* slices[] = {slice.data(), below.data()};
  const int32_t rowoffs[] = {7, 33, 51};
  const int32_t regslice[] = {0};
  const double bounds[] = {0, 1};
  const double scale[] = {1};
  const zox_Volume volume = {{slices}, 0, rowoffs, 1, 1, regslice, bounds, scale};
  for (Path path : {kShortest, kLists}) {
    Batch batch = rays_along_x(caster(), path, {1, 1, 0}, 3);
    EXPECT_EQ(batch.run(cast(), volume), ZOX_STS_NO_ERROR);
    EXPECT_EQ(batch.samples(0), (Ints{0, 1, 0}));
  }
}

TEST_P(StackFetch, SixteenBitVoxelsKeepTheirSign) {
  if (caster().element_size() == 1) return;
  for (Path path : {kShortest, kLists}) {
    Stack stack(caster(), 6, 3, 3);
    stack.set(1, 1, 1, -1).set(2, 1, 1, -32768).set(3, 1, 1, 32767).set(4, 1, 1, -300);
    Batch batch = rays_along_x(caster(), path, {1, 1, 1}, 4);
    EXPECT_EQ(batch.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
    EXPECT_EQ(batch.samples(0), (Ints{-1, -32768, 32767, -300}));
  }
}

TEST_P(StackFetch, ManyRaysMayReadOneVoxel) {
  Stack stack(caster(), 5, 5, 4);
  stack.set(2, 2, 2, 1);
  Batch batch(caster().element_size());
  for (int r = 0; r < 64; ++r) batch.add({2, 2, 2}, {0, 0, 0}, 3);
  EXPECT_EQ(batch.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
  for (int r = 0; r < 64; ++r) EXPECT_EQ(batch.samples(r), (Ints{1, 1, 1}));
}

INSTANTIATE_FOR_CASTERS(StackFetch, slice_stacks);

class NearestFetch : public CasterTest {};

// 2.5 rounds up, on every path.
TEST_P(NearestFetch, RoundsHalfUp) {
  for (Path path : {kShortest, kLists}) {
    Stack stack(caster(), 5, 5, 5);
    stack.set(3, 3, 3, 1);
    for (double position : {2.5, 2.4999999, 3.4999999}) {
      Batch batch = rays_along_x(caster(), path, {position, position, position}, 1);
      EXPECT_EQ(batch.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
      EXPECT_EQ(batch.at(0, 0), position == 2.4999999 ? 0 : 1);
    }
  }
}

// While they are sorted, columns and rows are 16 bits wide and read back without sign: -1 is 65535.
// The bit of column 65535 is number 65535 - 8191, whose shift count is 7 modulo 32.
TEST_P(NearestFetch, ColumnsAndRowsAreUnsigned) {
  Stack wide(caster(), 65536, 3, 2);
  const int byte = caster().bit() ? 65535 / 8 : 65535 * caster().element_size();
  wide.set_byte(byte, 1, 1, caster().bit() ? 0x80 : 1);
  Batch columns = rays_along_x(caster(), kLists, {-0.6, 1, 1}, 1);
  EXPECT_EQ(columns.run(cast(), wide.volume()), ZOX_STS_NO_ERROR);
  EXPECT_EQ(columns.at(0, 0), 1);
  Stack tall(caster(), 3, 65536, 2);
  tall.set(1, 65535, 1, 1);
  Batch rows = rays_along_x(caster(), kLists, {1, -0.6, 1}, 1);
  EXPECT_EQ(rows.run(cast(), tall.volume()), ZOX_STS_NO_ERROR);
  EXPECT_EQ(rows.at(0, 0), 1);
}

INSTANTIATE_FOR_CASTERS(NearestFetch, [](const Caster& c) { return !c.blocked() && !c.trilinear(); });

class BitFetch : public CasterTest {
 protected:
  // The samples at columns first, first + 1, ... of a row of the given bytes, the rest being 0.
  Ints columns(Path path, const std::vector<uint8_t>& bytes, int first, int count) {
    Stack stack(caster(), 16, 3, 2);
    for (size_t i = 0; i < bytes.size(); ++i) stack.set_byte(static_cast<int>(i), 1, 1, bytes[i]);
    Batch batch = rays_along_x(caster(), path, {static_cast<double>(first), 1, 1}, count);
    EXPECT_EQ(batch.run(cast(), stack.volume()), ZOX_STS_NO_ERROR);
    return batch.samples(0);
  }
};

TEST_P(BitFetch, TheFirstByteIsReadMostSignificantBitFirst) {
  for (Path path : {kShortest, kLists}) {
    EXPECT_EQ(columns(path, {0xA5}, 0, 8), (Ints{1, 0, 1, 0, 0, 1, 0, 1}));
    EXPECT_EQ(columns(path, {0x80}, 0, 8), (Ints{1, 0, 0, 0, 0, 0, 0, 0}));
  }
}

TEST_P(BitFetch, Column8ReadsTheLastBitOfTheSecondByte) {
  for (Path path : {kShortest, kLists}) {
    EXPECT_EQ(columns(path, {0, 0x01}, 8, 1), (Ints{1}));
    EXPECT_EQ(columns(path, {0, 0x80}, 8, 1), (Ints{0}));
    EXPECT_EQ(columns(path, {0, 0xFF}, 9, 7), (Ints{0, 0, 0, 0, 0, 0, 0}));
  }
}

// Bit number x - (x >> 3), shift count modulo 32.
TEST_P(BitFetch, ARowOfOnesHasHoles) {
  for (Path path : {kShortest, kLists}) {
    const Ints row = columns(path, std::vector<uint8_t>(16, 0xFF), 0, 73);
    for (int x = 0; x < 73; ++x) {
      const bool seen = x <= 8 || (x >= 36 && x <= 44);
      EXPECT_EQ(row[static_cast<size_t>(x)], seen ? 1 : 0) << "column " << x;
    }
  }
}

TEST_P(BitFetch, BeyondTheHoleEachColumnHasItsBit) {
  for (Path path : {kShortest, kLists}) {
    EXPECT_EQ(columns(path, {0, 0, 0, 0, 0x80, 0x10}, 35, 8), (Ints{0, 1, 0, 0, 0, 1, 0, 0}));
  }
}

INSTANTIATE_FOR_CASTERS(BitFetch, [](const Caster& c) { return c.bit(); });

// A row at the far end of what its offset can say. Sorted 8-bit and one-bit samples and 8-bit
// divergent trilinear ones add row and column in 32 bits, so that the sum wraps to the far end on the
// other side; 16-bit voxels and parallel trilinear ones lie on beyond.
class FarRow : public CasterTest {};

TEST_P(FarRow, TheSumOfRowAndColumnWrapsWhereItIs32BitsWide) {
  const bool wraps = caster().element_size() == 1 && !(caster().trilinear() && caster().parallel());
  const size_t half = size_t{1} << 31;
  // Of these pages only the touched ones are ever there.
  const GuardedBuffer memory(2 * half + 8192, GuardedBuffer::Flush::kStart);
  uint8_t* slice = memory.data() + half + 4096;
  const int column = caster().bit() ? 8 : 1;
  // With the row at 2^31 - 1 the next byte is 2^31 away, on one side or on the other; the next
  // 16-bit voxel 2^31 + 1.
  const size_t apart = caster().element_size() == 1 ? half : half + 1;
  *(wraps ? slice - half : slice + apart) = 1;
  const void* slices[] = {slice, slice};
  const int32_t rowoffs[] = {0, INT32_MAX, 0};
  const int32_t regslice[] = {0};
  const double bounds[] = {0, 1};
  const double scale[] = {1};
  const zox_Volume volume = {{slices}, 0, rowoffs, 1, 1, regslice, bounds, scale};
  Batch batch = rays_along_x(caster(), kLists, {static_cast<double>(column), 1, 0}, 1);
  EXPECT_EQ(batch.run(cast(), volume), ZOX_STS_NO_ERROR);
  EXPECT_EQ(batch.at(0, 0), 1);
}

INSTANTIATE_FOR_CASTERS(FarRow, slice_stacks);

}  // namespace
}  // namespace zox_test
