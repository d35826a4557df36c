// Samples sorted into one list a slice: the plain way, for any volume and any rays.
#pragma once

#include <string.h>

#include "numbers/value.h"
#include "stack/region_walk.h"
#include "stack/sample_number.h"

namespace zox::ZOX_SET {
namespace {

constexpr uint32_t kEndOfList = 0xFFFFFFFF;

// A sample on the list of its slice, in the place of its number.
struct NearestNode {
  uint32_t next;
  uint16_t x, y;  // the voxel, kept in 16 bits and read back unsigned
  NearestNode(uint32_t next_node, int fixed_x, int fixed_y, int)
      : next(next_node), x(static_cast<uint16_t>(fixed_x >> 21)), y(static_cast<uint16_t>(fixed_y >> 21)) {}
};

struct TrilinearNode {
  uint32_t next;
  int x, y;      // fixed point
  int position;  // in slices from the region's first
  TrilinearNode(uint32_t next_node, int fixed_x, int fixed_y, int in_region)
      : next(next_node), x(fixed_x), y(fixed_y), position(in_region) {}
};

template <bool nearest>
struct NodeKind {
  using Type = NearestNode;
};
template <>
struct NodeKind<false> {
  using Type = TrilinearNode;
};
template <GeneralRules rules>
using SampleNode = typename NodeKind<rules.slice_half == 1>::Type;

// A row's start plus a column in bytes. Some operations form the sum in 32 bits.
template <RowSum row_sum>
int64_t byte_offset(int32_t row, int column) {
  if constexpr (row_sum == RowSum::k32Bits) {
    return wrap_add(row, column);
  } else {
    return int64_t{row} + column;
  }
}

template <class T>
T load(const char* address) {
  T value;
  __builtin_memcpy(&value, address, sizeof value);
  return value;
}

// What a node is worth in slice s.
template <GeneralRules rules>
ElementOf<rules.voxel> value_of(const NearestNode& node, const zox_Volume& volume, int s) {
  using Element = ElementOf<rules.voxel>;
  const char* slice = static_cast<const char*>(volume.slices[s]);
  int column = rules.voxel == Voxel::kBit ? node.x >> 3 : node.x * int{sizeof(Element)};
  Element element = load<Element>(slice + byte_offset<rules.row_sum>(volume.rowoffs[node.y], column));
  if constexpr (rules.voxel == Voxel::kBit) return bit_of(element, bit_shift(node.x));
  return element;
}

template <GeneralRules rules>
ElementOf<rules.voxel> value_of(const TrilinearNode& node, const zox_Volume& volume, int s) {
  using Element = ElementOf<rules.voxel>;
  int v[2][2][2];
  for (int dz = 0; dz < 2; ++dz) {
    const char* slice = static_cast<const char*>(volume.slices[s + dz]);
    for (int dy = 0; dy < 2; ++dy) {
      int column = (node.x >> 20) * int{sizeof(Element)};
      const char* left = slice + byte_offset<rules.row_sum>(volume.rowoffs[(node.y >> 20) + dy], column);
      v[dz][dy][0] = load<Element>(left);
      v[dz][dy][1] = load<Element>(left + sizeof(Element));
    }
  }
  auto result = [&](auto formula) {
    return formula(node.x, node.y, node.position, v[0][0][0], v[0][0][1], v[0][1][0], v[0][1][1], v[1][0][0],
                   v[1][0][1], v[1][1][0], v[1][1][1]);
  };
  if constexpr (rules.voxel == Voxel::k8U) {
    return static_cast<Element>(result(trilinear_fixed));
  } else {
    return static_cast<Element>(truncate(result(trilinear_real)));
  }
}

// Builds the lists, then visits each slice once in ascending order. A sample whose slice is not
// one of the volume's enters no list and is left unwritten.
template <GeneralRules rules>
void sweep_lists(const zox_Volume& volume, const zox_Rays& batch, const Regions& regions, uint32_t* heads,
                 SampleNode<rules>* nodes) {
  if (volume.nslices > 0) memset(heads, 0xFF, sizeof *heads * static_cast<size_t>(volume.nslices));
  for (int r = 0; r < batch.nrays; ++r) {
    if (batch.nsamples[r] < 1) continue;
    Trace t = trace_of<rules>(batch, r, regions.n == 1);
    RegionWalk walk(regions, t);
    for (int k = 0; k < t.n; ++k, walk.advance()) {
      walk.enter_region();
      int s = slice_of<slice_rules(rules)>(walk.position(), walk.first_slice());
      if (s >= 0 && s < volume.nslices) {
        uint32_t node = static_cast<uint32_t>(sample_number(r, k));
        nodes[node] = SampleNode<rules>(heads[s], t.x, t.y, walk.position());
        heads[s] = node;
      }
      t.x = wrap_add(t.x, t.sx);
      t.y = wrap_add(t.y, t.sy);
    }
  }
  for (int s = 0; s < volume.nslices; ++s) {
    for (uint32_t node = heads[s]; node != kEndOfList; node = nodes[node].next) {
      *sample_at<ElementOf<rules.voxel>>(batch.planes, static_cast<int>(node)) =
          value_of<rules>(nodes[node], volume, s);
    }
  }
}

}  // namespace
}  // namespace zox::ZOX_SET
