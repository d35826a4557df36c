// Bricks as the plain reference finds them.
#include <gtest/gtest.h>
#include <zox_volume_layout.h>

#include <random>
#include <vector>

#include "bricks.h"

namespace {

TEST(LayoutBricks, IndexIsTheReferences) {
  std::mt19937 random(1);
  for (const int32_t size : {64, 128, 256, 512, 1024, 2048}) {
    const reference::BlockedLayout layout(size);
    const int32_t layers = size == 2048 ? 1024 : 2048;
    for (int i = 0; i < 20000; ++i) {
      const auto x = static_cast<int32_t>(random() % static_cast<uint32_t>(size));
      const auto y = static_cast<int32_t>(random() % static_cast<uint32_t>(size));
      const auto z = static_cast<int32_t>(random() % static_cast<uint32_t>(layers));
      ASSERT_EQ(layout.index(x, y, z), zox_blocked_index(size, x, y, z))
          << size << ": " << x << ' ' << y << ' ' << z;
    }
  }
}

TEST(LayoutBricks, SizeIsTheLeastPowerOfTwo) {
  EXPECT_EQ(64, zox_blocked_size(1, 1));
  EXPECT_EQ(64, zox_blocked_size(64, 64));
  EXPECT_EQ(128, zox_blocked_size(65, 1));
  EXPECT_EQ(512, zox_blocked_size(3, 257));
  EXPECT_EQ(2048, zox_blocked_size(2048, 2048));
  EXPECT_EQ(0, zox_blocked_size(2049, 1));
  EXPECT_EQ(0, zox_blocked_size(0, 5));
  EXPECT_EQ(0, zox_blocked_size(5, -1));
}

TEST(LayoutBricks, ElementsEndWithTheLastBrick) {
  for (const int32_t size : {64, 128, 1024})
    for (const int32_t layers : {1, 32, 33, 64, 300}) {
      const int32_t padded = (layers + 31) / 32 * 32;
      EXPECT_EQ(uint64_t{reference::BlockedLayout(size).index(size - 1, size - 1, padded - 1)} + 1,
                zox_blocked_elements(size, layers));
    }
  EXPECT_EQ(uint64_t{1} << 32, zox_blocked_elements(2048, 1024));
  EXPECT_EQ(0u, zox_blocked_elements(2048, 1025));
  EXPECT_EQ(0u, zox_blocked_elements(0, 10));
  EXPECT_EQ(0u, zox_blocked_elements(64, 0));
}

template <class Voxel>
struct Packing;
template <>
struct Packing<uint8_t> {
  static constexpr auto pack = zox_blocked_pack_8U;
  static constexpr auto unpack = zox_blocked_unpack_8U;
};
template <>
struct Packing<int16_t> {
  static constexpr auto pack = zox_blocked_pack_16S;
  static constexpr auto unpack = zox_blocked_unpack_16S;
};

// Rows upside down and gaps between them; every other layer of the bricks; the padding stays as it was.
template <class Voxel>
void expect_round_trip(int32_t columns, int32_t rows, int32_t layers, int32_t first_layer) {
  constexpr Voxel kUntouched = 77;
  std::mt19937 random(2);
  const ptrdiff_t row_stride = -(columns + 5), slice_stride = (columns + 5) * (rows + 1);
  std::vector<Voxel> plain(static_cast<size_t>(slice_stride) * static_cast<size_t>(layers));
  for (Voxel& voxel : plain) voxel = static_cast<Voxel>(random());
  const ptrdiff_t origin = -row_stride * (rows - 1);
  const int32_t size = zox_blocked_size(columns, rows);
  std::vector<Voxel> blocked(zox_blocked_elements(size, first_layer + layers), kUntouched);
  Packing<Voxel>::pack(plain.data() + origin, columns, rows, layers, row_stride, slice_stride, blocked.data(),
                       size, first_layer);

  const reference::BlockedLayout layout(size);
  std::vector<Voxel> expected(blocked.size(), kUntouched);
  for (int z = 0; z < layers; ++z)
    for (int y = 0; y < rows; ++y)
      for (int x = 0; x < columns; ++x)
        expected[layout.index(x, y, first_layer + z)] =
            plain[static_cast<size_t>(origin + z * slice_stride + y * row_stride + x)];
  EXPECT_TRUE(expected == blocked);

  std::vector<Voxel> back(plain.size(), kUntouched), whole = back;
  Packing<Voxel>::unpack(blocked.data(), size, first_layer, back.data() + origin, columns, rows, layers,
                         row_stride, slice_stride);
  for (int z = 0; z < layers; ++z)
    for (int y = 0; y < rows; ++y)
      for (int x = 0; x < columns; ++x) {
        const auto i = static_cast<size_t>(origin + z * slice_stride + y * row_stride + x);
        whole[i] = plain[i];
      }
  EXPECT_TRUE(whole == back);
}

TEST(LayoutBricks, PackingGoesThereAndBack) {
  expect_round_trip<uint8_t>(70, 65, 35, 0);
  expect_round_trip<int16_t>(70, 65, 35, 0);
  expect_round_trip<uint8_t>(3, 200, 2, 31);
  expect_round_trip<int16_t>(64, 1, 1, 40);
}

}  // namespace
