// The values of staged samples of a slice stack.
#pragma once

#include "core/slice_buckets.h"
#include "core/staged_samples.h"
#include "core/voxel_pair.h"

namespace zox::ZOX_SET {
namespace {

// The rows, columns and slices that a batch may touch, each from first to last.
struct Extent {
  int64_t low[3] = {INT64_MAX, INT64_MAX, INT64_MAX};
  int64_t high[3] = {-1, -1, -1};

  void include(int axis, int64_t from, int64_t to) {
    if (from > to) return include(axis, to, from);
    low[axis] = from < low[axis] ? from : low[axis];
    high[axis] = to > high[axis] ? to : high[axis];
  }
};

// Where voxels lie. Rows and slices are often evenly apart; then one 32-bit offset, computed in
// vectors, replaces two table look-ups a sample.
struct StackView {
  const void* const* slices;
  const int32_t* rowoffs;
  bool even = false;
  const char* origin = nullptr;  // an offset of 0, if even
  int row_pitch = 0, slice_pitch = 0;
  int origin_offset = 0;  // of the origin in the offsets' own count

  // Reads the table entries from the first to the last that samples use; these read `beyond`
  // further voxels along each axis.
  static StackView of(const zox_Volume& volume, Extent extent, int beyond) {
    StackView view;
    for (int axis = 0; axis < 3; ++axis) extent.high[axis] += beyond;
    view.slices = volume.slices;
    view.rowoffs = volume.rowoffs;
    view.even = view.find_pitches(extent);
    return view;
  }

 private:
  bool find_pitches(const Extent& e) {
    constexpr int64_t kLargest = 1 << 30, kMostColumns = 1 << 17;
    if (e.high[0] < e.low[0] || e.high[2] < e.low[2]) return false;  // no sample at all
    if (e.low[0] < 0 || e.high[0] > 65535 || e.low[1] < 0 || e.high[1] > 65535 || e.low[2] < 0) return false;
    int64_t row = rowoffs[e.low[1]], row_step = e.low[1] < e.high[1] ? rowoffs[e.low[1] + 1] - row : 0;
    for (int64_t y = e.low[1]; y <= e.high[1]; ++y, row += row_step) {
      if (rowoffs[y] != row) return false;
    }
    intptr_t slice = address(e.low[2]), slice_step = e.low[2] < e.high[2] ? address(e.low[2] + 1) - slice : 0;
    for (int64_t s = e.low[2]; s <= e.high[2]; ++s, slice += slice_step) {
      if (address(s) != slice) return false;
    }
    int64_t rows = row_step * (e.high[1] - e.low[1]), first_row = rowoffs[e.low[1]];
    if (slice_step > kLargest || slice_step < -kLargest) return false;
    int64_t depth = slice_step * (e.high[2] - e.low[2]);
    if (size(rows) + size(depth) + size(first_row) + kMostColumns > kLargest) return false;
    row_pitch = static_cast<int>(row_step);
    slice_pitch = static_cast<int>(slice_step);
    origin = static_cast<const char*>(slices[e.low[2]]);
    int64_t start = first_row - row_step * e.low[1] - slice_step * e.low[2];
    origin_offset = static_cast<int>(static_cast<uint32_t>(start));
    return true;
  }

  static int64_t size(int64_t v) { return v < 0 ? -v : v; }
  intptr_t address(int64_t s) const { return reinterpret_cast<intptr_t>(slices[s]); }
};

// Samples number `first` to `first + n - 1` of the stage, n up to 64.
template <GeneralRules rules, class Element>
void sample_stack_nearest(const StackView& view, const StagedSamples& stage, int first, int n,
                          Element* values) {
  const int *x = stage.x + first, *y = stage.y + first, *slice = stage.slice + first;
  constexpr bool bit = rules.voxel == Voxel::kBit;
  Lanes<int> column, offset, shift;
  for (int i = 0; i < padded(n); ++i) {
    int voxel = (x[i] >> 21) & 0xFFFF;
    column[i] = bit ? voxel >> 3 : voxel * int{sizeof(Element)};
    if constexpr (bit) shift[i] = bit_shift(voxel);
  }
  if (view.even) {
    for (int i = 0; i < padded(n); ++i) {
      int row = wrap_mul((y[i] >> 21) & 0xFFFF, view.row_pitch);
      offset[i] = wrap_add(wrap_add(column[i], view.origin_offset),
                           wrap_add(row, wrap_mul(slice[i], view.slice_pitch)));
    }
    for (int i = 0; i < n; ++i) values[i] = load<Element>(view.origin + offset[i]);
  } else {
    for (int i = 0; i < n; ++i) {
      const char* base = static_cast<const char*>(view.slices[slice[i]]);
      values[i] = load<Element>(base + byte_offset<rules>(view.rowoffs[(y[i] >> 21) & 0xFFFF], column[i]));
    }
  }
  if constexpr (bit) {
    for (int i = 0; i < padded(n); ++i) values[i] = bit_of(values[i], shift[i]);
  }
}

template <GeneralRules rules, class Element>
void fetch_stack_corners(const StackView& view, const StagedSamples& stage, int first, int n,
                         Corners<Element>& corners) {
  const int *x = stage.x + first, *y = stage.y + first, *slice = stage.slice + first;
  if (view.even) {
    Lanes<int> offset;
    for (int i = 0; i < padded(n); ++i) {
      int in_slice = wrap_add((x[i] >> 20) * int{sizeof(Element)}, wrap_mul(y[i] >> 20, view.row_pitch));
      offset[i] = wrap_add(wrap_add(in_slice, view.origin_offset), wrap_mul(slice[i], view.slice_pitch));
    }
    for (int i = 0; i < n; ++i) {
      const char* at = view.origin + offset[i];
      corners.pair[0][i] = load_pair<Element>(at);
      corners.pair[1][i] = load_pair<Element>(at + view.row_pitch);
      corners.pair[2][i] = load_pair<Element>(at + view.slice_pitch);
      corners.pair[3][i] = load_pair<Element>(at + view.slice_pitch + view.row_pitch);
    }
    return;
  }
  for (int i = 0; i < n; ++i) {
    int column = (x[i] >> 20) * int{sizeof(Element)};
    int64_t row_0 = byte_offset<rules>(view.rowoffs[y[i] >> 20], column);
    int64_t row_1 = byte_offset<rules>(view.rowoffs[(y[i] >> 20) + 1], column);
    const char* lower = static_cast<const char*>(view.slices[slice[i]]);
    const char* upper = static_cast<const char*>(view.slices[slice[i] + 1]);
    corners.pair[0][i] = load_pair<Element>(lower + row_0);
    corners.pair[1][i] = load_pair<Element>(lower + row_1);
    corners.pair[2][i] = load_pair<Element>(upper + row_0);
    corners.pair[3][i] = load_pair<Element>(upper + row_1);
  }
}

template <GeneralRules rules, class Element>
void sample_stack_trilinear(const StackView& view, const StagedSamples& stage, int first, int n,
                            Element* values) {
  const int *x = stage.x + first, *y = stage.y + first, *position = stage.position + first;
  Corners<Element> corners;
  fetch_stack_corners<rules>(view, stage, first, n, corners);
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
}

// Writes each value to its plane and ray; eight rays side by side in one store.
template <class Element>
void scatter(const Element* values, const int* node, int n, void* const* planes) {
  int i = 0;
  for (; i + 8 <= n; i += 8) {
    bool side_by_side = true;
    for (int j = 1; j < 8; ++j) side_by_side &= node[i + j] == node[i] + j;
    if (side_by_side && (node[i] & 63) <= 56) {
      Element* plane = static_cast<Element*>(planes[node[i] >> 6]);
      __builtin_memcpy(plane + (node[i] & 63), values + i, 8 * sizeof(Element));
    } else {
      for (int j = i; j < i + 8; ++j) static_cast<Element*>(planes[node[j] >> 6])[node[j] & 63] = values[j];
    }
  }
  for (; i < n; ++i) static_cast<Element*>(planes[node[i] >> 6])[node[i] & 63] = values[i];
}

// Samples all that is staged, in order, and empties the stage.
template <GeneralRules rules>
[[gnu::noinline]] void flush_stage(const StackView& view, StagedSamples& stage, void* const* planes) {
  for (int first = 0; first < stage.n; first += kLanes) {
    int n = stage.n - first < kLanes ? stage.n - first : kLanes;
    Lanes<ElementOf<rules.voxel>> values;
    if constexpr (rules.slice_half) {
      sample_stack_nearest<rules>(view, stage, first, n, values.at);
    } else {
      sample_stack_trilinear<rules>(view, stage, first, n, values.at);
    }
    scatter(values.at, stage.node + first, n, planes);
  }
  stage.n = 0;
}

}  // namespace
}  // namespace zox::ZOX_SET
