// The values of staged samples of a slice stack.
#pragma once

#include "numbers/voxel_pair.h"
#include "sets/vectors.h"
#include "stack/slice_lists.h"
#include "stack/stack_view.h"

namespace zox::ZOX_SET {
namespace {

// Eight samples whose nodes follow one another lie side by side in one plane.
inline bool side_by_side(const int* node) { return (node[0] & 63) <= 56 && consecutive_8(node); }

// Writes value(i) of sample i to its plane and ray.
template <class Element, class Value>
void store_samples(const int* node, int n, void* const* planes, Value value) {
  int i = 0;
  for (; i + 8 <= n; i += 8) {
    if (side_by_side(node + i)) {
      Element* to = static_cast<Element*>(planes[node[i] >> 6]) + (node[i] & 63);
      for (int j = 0; j < 8; ++j) to[j] = value(i + j);
    } else {
      for (int j = i; j < i + 8; ++j) static_cast<Element*>(planes[node[j] >> 6])[node[j] & 63] = value(j);
    }
  }
  for (; i < n; ++i) static_cast<Element*>(planes[node[i] >> 6])[node[i] & 63] = value(i);
}

// A number for every staged sample.
struct alignas(64) StageNumbers {
  int at[kStageRoom];
  int& operator[](int i) { return at[i]; }
};

// address(i) is where sample i is read; all that it needs it holds by value. Of every eighth sample,
// whose followers are neighbours more often than not, the line is asked for before the first is read:
// memory then works on many at once. A prefetch neither faults nor brings in a page: no slice is
// visited by it.
template <FetchRules rules, class Address>
void sample_nearest_at(Address address, const StagedSamples& stage, const int* shift, void* const* planes) {
  using Element = ElementOf<rules.voxel>;
  for (int i = 0; i < stage.n; i += 8) __builtin_prefetch(address(i));
  store_samples<Element>(stage.node, stage.n, planes, [=](int i) {
    Element element = load<Element>(address(i));
    keep_order();
    if constexpr (rules.voxel == Voxel::kBit) element = bit_of(element, shift[i]);
    return element;
  });
}

// Columns and rows are taken as the operation's nodes would hold them: in 16 bits, unsigned, or as
// they are.
template <FetchRules rules>
void sample_nearest(const StackView& view, bool even, const StagedSamples& stage, void* const* planes) {
  constexpr bool bit = rules.voxel == Voxel::kBit;
  constexpr int index_mask = rules.index_in_16_bits ? 0xFFFF : -1;
  StageNumbers column, row, offset, shift;
  for (int i = 0; i < padded(stage.n); ++i) {
    int voxel = (stage.x[i] >> 21) & index_mask;
    column[i] = bit ? voxel >> 3 : voxel * int{sizeof(ElementOf<rules.voxel>)};
    row[i] = (stage.y[i] >> 21) & index_mask;
    if constexpr (bit) shift[i] = bit_shift(voxel);
  }
  if (even) {
    for (int i = 0; i < padded(stage.n); ++i) {
      int in_slice = wrap_add(wrap_add(column[i], view.start), wrap_mul(row[i], view.row_pitch));
      offset[i] = wrap_add(in_slice, wrap_mul(stage.slice[i], view.slice_pitch));
    }
    auto address = [origin = view.origin, to = offset.at](int i) { return origin + to[i]; };
    sample_nearest_at<rules>(address, stage, shift.at, planes);
  } else {
    auto address = [slices = view.slices, rowoffs = view.rowoffs, slice = stage.slice, y = row.at,
                    x = column.at](int i) {
      const char* base = static_cast<const char*>(slices[slice[i]]);
      return base + byte_offset<rules.row_sum>(rowoffs[y[i]], x[i]);
    };
    sample_nearest_at<rules>(address, stage, shift.at, planes);
  }
}

// Samples number `first` to `first + n - 1` of the stage, n up to 64.
template <FetchRules rules, class Element>
void fetch_stack_corners(const StackView& view, bool even, const StagedSamples& stage, int first, int n,
                         Corners<Element>& corners) {
  const int *x = stage.x + first, *y = stage.y + first, *slice = stage.slice + first;
  if (even) {
    Lanes<int> offset;
    for (int i = 0; i < padded(n); ++i) {
      int in_slice = wrap_add((x[i] >> 20) * int{sizeof(Element)}, wrap_mul(y[i] >> 20, view.row_pitch));
      offset[i] = wrap_add(wrap_add(in_slice, view.start), wrap_mul(slice[i], view.slice_pitch));
    }
    const char *origin = view.origin, *next_row = origin + view.row_pitch;
    const char *next_slice = origin + view.slice_pitch, *next_both = next_slice + view.row_pitch;
    for (int i = 0; i < n; ++i, keep_order()) {
      corners.pair[0][i] = load_pair<Element>(origin + offset[i]);
      corners.pair[1][i] = load_pair<Element>(next_row + offset[i]);
      corners.pair[2][i] = load_pair<Element>(next_slice + offset[i]);
      corners.pair[3][i] = load_pair<Element>(next_both + offset[i]);
    }
    return;
  }
  for (int i = 0; i < n; ++i, keep_order()) {
    int column = (x[i] >> 20) * int{sizeof(Element)};
    int64_t row_0 = byte_offset<rules.row_sum>(view.rowoffs[y[i] >> 20], column);
    int64_t row_1 = byte_offset<rules.row_sum>(view.rowoffs[(y[i] >> 20) + 1], column);
    const char* lower = static_cast<const char*>(view.slices[slice[i]]);
    const char* upper = static_cast<const char*>(view.slices[slice[i] + 1]);
    corners.pair[0][i] = load_pair<Element>(lower + row_0);
    corners.pair[1][i] = load_pair<Element>(lower + row_1);
    corners.pair[2][i] = load_pair<Element>(upper + row_0);
    corners.pair[3][i] = load_pair<Element>(upper + row_1);
  }
}

template <FetchRules rules, class Element = ElementOf<rules.voxel>>
void sample_trilinear_block(const StackView& view, bool even, const StagedSamples& stage, int first, int n,
                            void* const* planes) {
  const int *x = stage.x + first, *y = stage.y + first, *position = stage.position + first;
  Corners<Element> corners;
  Lanes<Element> values;
  fetch_stack_corners<rules>(view, even, stage, first, n, corners);
  if constexpr (rules.voxel == Voxel::k8U) {
    for (int i = 0; i < padded(n); ++i) {
      values[i] = static_cast<Element>(corners.interpolated(trilinear_fixed, i, x[i], y[i], position[i]));
    }
  } else {
    Lanes<double> real;
    Lanes<int> truncated;
    for (int i = 0; i < padded(n); ++i) {
      real[i] = corners.interpolated(trilinear_real, i, x[i], y[i], position[i]);
    }
    truncate_lanes(real.at, truncated.at, n);
    for (int i = 0; i < padded(n); ++i) values[i] = static_cast<Element>(truncated[i]);
  }
  store_samples<Element>(stage.node + first, n, planes, [&](int i) { return values[i]; });
}

// Whether offsets reach all that is staged. Indices that 16 bits would change are left to the
// tables. The base set does not ask: its vectors cannot multiply, and looking up is quicker.
template <FetchRules rules>
bool evenly_apart(StackView& view, StagedSamples& stage) {
  constexpr int bits = rules.trilinear ? 20 : 21;
  stage.pad();
  int n = padded(stage.n);
  Range y = range_of(stage.y, n);
  if (rules.index_in_16_bits && (y.low < 0 || range_of(stage.x, n).low < 0)) return false;
  Range slices = {stage.slice[0], stage.slice[stage.n - 1]};
  if (!rules.in_slice_order) slices = range_of(stage.slice, n);
  return view.even_for({y.low >> bits, y.high >> bits}, slices);
}

// Samples all that is staged, in order, and empties the stage.
template <FetchRules rules>
[[gnu::noinline]] void flush_stage(StackView& view, StagedSamples& stage, void* const* planes) {
  if (stage.n == 0) return;
  bool even = kVector > 4 && evenly_apart<rules>(view, stage);
  if constexpr (rules.trilinear) {
    for (int first = 0; first < stage.n; first += kLanes) {
      int n = stage.n - first < kLanes ? stage.n - first : kLanes;
      sample_trilinear_block<rules>(view, even, stage, first, n, planes);
    }
  } else {
    sample_nearest<rules>(view, even, stage, planes);
  }
  stage.n = 0;
}

}  // namespace
}  // namespace zox::ZOX_SET
