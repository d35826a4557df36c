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
    return formula(x, y, z, Pair::left(pair[0][i]), Pair::right(pair[0][i]), Pair::left(pair[1][i]),
                   Pair::right(pair[1][i]), Pair::left(pair[2][i]), Pair::right(pair[2][i]),
                   Pair::left(pair[3][i]), Pair::right(pair[3][i]));
  }
};

template <class Element>
typename VoxelPair<Element>::Type load_pair(const void* address) {
  typename VoxelPair<Element>::Type pair;
  __builtin_memcpy(&pair, address, sizeof pair);
  return pair;
}

template <int lane, class Element, class Address>
[[gnu::always_inline]] inline Sixteen with_pairs(Sixteen pairs, Address address) {
  using Pair = typename VoxelPair<Element>::Type;
  if constexpr (lane < 16 / sizeof(Pair)) {
    return with_pairs<lane + 1, Element>(with_lane<lane>(pairs, load_pair<Element>(address(lane))), address);
  }
  return pairs;
}

// 16 pairs, pair j read at address(j). They are put together in registers and stored as a vector reads
// them: it would wait for stores of one pair each.
template <class Element, class Address>
[[gnu::always_inline]] inline void store_pairs(typename VoxelPair<Element>::Type* to, Address address) {
  constexpr int kTogether = 16 / sizeof *to;
  const auto part = [&](int first) {
    return with_pairs<0, Element>(zeros_16(), [&](int j) { return address(first + j); });
  };
  if constexpr (sizeof(Element) == 1) {
    store_32(to, part(0), part(kTogether));
  } else {
    store_64(to, part(0), part(kTogether), part(2 * kTogether), part(3 * kTogether));
  }
}

}  // namespace
}  // namespace zox::ZOX_SET
