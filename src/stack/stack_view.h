// Where the voxels of a slice stack lie. Rows and slices are often evenly apart; then one 32-bit
// offset, computed in vectors, replaces two table look-ups a sample.
#pragma once

#include "stack/staged_samples.h"
#include "zox_volume.h"

namespace zox::ZOX_SET {
namespace {

// Table entries low .. high, found to be evenly apart: entry i is first + (i - low) * pitch.
struct Progression {
  int64_t low = 0, high = -1;
  int64_t first = 0;
  int64_t pitch = 0;

  bool covers(Range r) const { return low <= r.low && r.high <= high; }

  // Reads the entries up to the new ends; false if they break the progression.
  template <class Entry>
  bool extend(Range r, Entry entry) {
    if (high < low) {
      low = high = r.low;
      first = entry(low);
    }
    if (low == high && r.high > high) pitch = entry(high + 1) - first;
    if (low == high && r.high == high && r.low < low) pitch = first - entry(low - 1);
    for (; high < r.high; ++high) {
      if (entry(high + 1) != first + (high + 1 - low) * pitch) return false;
    }
    for (; low > r.low; --low, first -= pitch) {
      if (entry(low - 1) != first - pitch) return false;
    }
    return true;
  }

  int64_t span() const { return (pitch < 0 ? -pitch : pitch) * (high - low); }
};

class StackView {
 public:
  // Trilinear operations read `beyond` = 1 more row, column and slice.
  StackView(const zox_Volume& volume, int beyond)
      : slices(volume.slices), rowoffs(volume.rowoffs), beyond_(beyond) {}

  // Whether the 32-bit offsets below reach these samples. Looks only at table entries from the first to the
  // last that samples of this call have used so far.
  bool even_for(Range rows, Range slices_used) {
    if (!even_) return false;
    rows.high += beyond_;
    slices_used.high += beyond_;
    if (rows_.covers(rows) && stack_.covers(slices_used)) return true;
    even_ = extend(rows, slices_used);
    return even_;
  }

  const void* const* slices;
  const int32_t* rowoffs;

  // Evenly apart: a voxel's address is origin plus, in bytes, start + column + row * row_pitch +
  // slice * slice_pitch, of which the sum alone need fit in 32 bits.
  const char* origin = nullptr;
  int start = 0;
  int row_pitch = 0;
  int slice_pitch = 0;

 private:
  static constexpr int64_t kMostColumnBytes = 1 << 13;  // fixed point has 11 bits for columns
  static constexpr int64_t kLargestOffset = 1 << 30;

  bool extend(Range rows, Range slices_used) {
    if (!rows_.extend(rows, [this](int64_t y) { return int64_t{rowoffs[y]}; })) return false;
    if (!stack_.extend(slices_used, [this](int64_t s) { return reinterpret_cast<intptr_t>(slices[s]); })) {
      return false;
    }
    int64_t first_row = rows_.first < 0 ? -rows_.first : rows_.first;
    if (first_row + rows_.span() + stack_.span() + kMostColumnBytes > kLargestOffset) return false;
    origin = static_cast<const char*>(slices[stack_.low]);
    row_pitch = static_cast<int>(rows_.pitch);
    slice_pitch = static_cast<int>(stack_.pitch);
    int64_t at_zero = rows_.first - rows_.low * rows_.pitch - stack_.low * stack_.pitch;
    start = static_cast<int>(static_cast<uint32_t>(at_zero));
    return true;
  }

  int beyond_;
  bool even_ = true;
  Progression rows_, stack_;
};

// Where staged samples go: samples them all, in order, and empties the stage.
struct StageSink {
  void (*sample)(StackView& view, StagedSamples& stage, void* const* planes);
  StackView& view;
  void* const* planes;

  void take(StagedSamples& stage) const { sample(view, stage, planes); }
};

}  // namespace
}  // namespace zox::ZOX_SET
