// The corners of a trilinear sample, two neighbours in x at a time.
#pragma once

#include "numbers/lanes.h"
#include "sets/set.h"

namespace zox::ZOX_SET {
namespace {

// Voxels x and x + 1 read in one load: the left one in the low half.
template <class Element>
struct VoxelPair;
template <>
struct VoxelPair<uint8_t> {
  using Type = uint16_t;
  static int left(Type pair) { return pair & 0xFF; }
  static int right(Type pair) { return pair >> 8; }
  static Type with_right(Type pair, uint8_t right) { return static_cast<Type>((pair & 0xFF) | right << 8); }
};
template <>
struct VoxelPair<int16_t> {
  using Type = uint32_t;
  static int left(Type pair) { return static_cast<int16_t>(pair); }
  static int right(Type pair) { return static_cast<int32_t>(pair) >> 16; }
  static Type with_right(Type pair, int16_t right) {
    return (pair & 0xFFFF) | static_cast<Type>(static_cast<uint16_t>(right)) << 16;
  }
};

// The eight corners of every lane: four pairs along x, for (y, z), (y + 1, z), (y, z + 1) and
// (y + 1, z + 1).
template <class Element>
struct Corners {
  using Pair = VoxelPair<Element>;
  Lanes<typename Pair::Type> pair[4];

  // A formula of value.h, of lane i.
  template <class Formula, class Fraction>
  auto interpolated(Formula formula, int i, Fraction x, Fraction y, Fraction z) const {
    return formula(
        x, y, z,
        {Pair::left(pair[0][i]), Pair::right(pair[0][i]), Pair::left(pair[1][i]), Pair::right(pair[1][i]),
         Pair::left(pair[2][i]), Pair::right(pair[2][i]), Pair::left(pair[3][i]), Pair::right(pair[3][i])});
  }
};

// 16 pairs, pair j read at address(j). They are put together in registers and stored as a vector reads
// them: it would wait for stores of one pair each.
template <class Element, class Address>
[[gnu::always_inline]] inline void store_pairs(typename VoxelPair<Element>::Type* to, Address address) {
  const auto from = [&](int first) {
    return [=](int j) { return load<typename VoxelPair<Element>::Type>(address(first + j)); };
  };
  if constexpr (sizeof(Element) == 1) {
    store_32(to, eight_numbers(from(0)), eight_numbers(from(8)));
  } else {
    store_64(to, four_numbers(from(0)), four_numbers(from(4)), four_numbers(from(8)), four_numbers(from(12)));
  }
}

}  // namespace
}  // namespace zox::ZOX_SET
