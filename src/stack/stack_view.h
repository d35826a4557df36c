// Where the voxels of a slice stack lie. Rows and slices are often evenly apart; then one 32-bit
// offset, computed in vectors, replaces two table look-ups a sample.
#pragma once

#include "operations/rules.h"
#include "sets/set.h"
#include "stack/region_walk.h"
#include "stack/staged_samples.h"
#include "zox_volume.h"

namespace zox::ZOX_SET {
namespace {

// A row's start plus a column in bytes. Some operations form the sum in 32 bits.
template <RowSum row_sum>
int64_t byte_offset(int32_t row, int column) {
  if constexpr (row_sum == RowSum::k32Bits) {
    return wrap_add(row, column);
  } else {
    return int64_t{row} + column;
  }
}

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
    int64_t broken = 0, expected = first + (high + 1 - low) * pitch;
    for (int64_t i = high + 1; i <= r.high; ++i, expected += pitch) broken |= entry(i) ^ expected;
    high = high < r.high ? r.high : high;
    for (; low > r.low; --low, first -= pitch) broken |= entry(low - 1) ^ (first - pitch);
    return broken == 0;
  }

  int64_t span() const { return (pitch < 0 ? -pitch : pitch) * (high - low); }
};

// The base set looks rows and slices up: its vectors cannot multiply.
constexpr bool kOffsetsPay = kVector > 4;

class StackView {
 public:
  StackView(const zox_Volume& volume, FetchRules rules)
      : slices(volume.slices),
        rowoffs(volume.rowoffs),
        bits_are_read(rules.voxel == Voxel::kBit),
        bits_(rules.trilinear ? 20 : 21),
        column_shift_(rules.voxel == Voxel::kBit  ? bits_ + 3
                      : rules.voxel == Voxel::k8U ? bits_
                                                  : bits_ - 1),
        column_mask_(rules.voxel == Voxel::k16S ? -2 : -1),
        index_in_16_bits_(rules.index_in_16_bits),
        beyond_(rules.trilinear ? 1 : 0) {}

  // Whether the 32-bit offsets below reach samples of these x and y, in fixed point, and slices. Looks only
  // at table entries from the first to the last of this call so far. Indices that 16 bits would change are
  // left to the tables.
  bool even_for(Range x, Range y, Range slices_used) {
    if (!kOffsetsPay || !even_ || (index_in_16_bits_ && (x.low < 0 || y.low < 0))) return false;
    Range rows = {y.low >> bits_, (y.high >> bits_) + beyond_};
    slices_used.high += beyond_;
    if (rows_.covers(rows) && stack_.covers(slices_used)) return true;
    even_ = extend(rows, slices_used);
    return even_;
  }

  // Writes a vector of samples from number n of the stage on; append(to, v) does so with each of its fields.
  template <bool even, bool trilinear, class Samples, class Append>
  void stage(StagedSamples& to, int n, const Samples& at, Vector slice, Append append) const {
    append(to.place + n, even ? offset(at.x, at.y, slice_start(slice)) : slice);
    if (!even || trilinear || bits_are_read) append(to.x + n, at.x);
    if (!even || trilinear) append(to.y + n, at.y);
    if (trilinear) append(to.position + n, at.position);
    append(to.number + n, at.number);
  }

  const void* const* slices;
  const int32_t* rowoffs;
  const bool bits_are_read;

  // Evenly apart: a voxel's address is origin plus, in bytes, start + column + row * row_pitch +
  // slice * slice_pitch, of which the sum alone need fit in 32 bits. What has been called so stays so.
  Vector slice_start(Vector slice) const { return broadcast(start) + slice * broadcast(slice_pitch); }
  Vector offset(Vector x, Vector y, Vector slice_start) const {
    const Vector column = shift_right(x, column_shift_) & broadcast(column_mask_);
    return column + slice_start + shift_right(y, bits_) * broadcast(row_pitch);
  }

  const char* origin = nullptr;
  int start = 0;
  int row_pitch = 0;
  int slice_pitch = 0;

 private:
  // Fixed point leaves at most 12 bits for a column, of two bytes.
  static constexpr int64_t kMostColumnBytes = 1 << 13;
  // A sample's neighbours lie as far again at most, which 32 bits hold as well.
  static constexpr int64_t kLargestOffset = 1 << 30;

  bool extend(Range rows, Range slices_used) {
    if (!rows_.extend(rows, [this](int64_t y) { return int64_t{rowoffs[y]}; })) return false;
    if (!stack_.extend(slices_used, [this](int64_t s) { return reinterpret_cast<intptr_t>(slices[s]); })) {
      return false;
    }
    int64_t first_row = rows_.first < 0 ? -rows_.first : rows_.first;
    if (first_row + rows_.span() + stack_.span() + kMostColumnBytes > kLargestOffset) return false;
    if (!origin) {
      origin = static_cast<const char*>(slices[stack_.low]);
      origin_slice_ = stack_.low;
    }
    row_pitch = static_cast<int>(rows_.pitch);
    slice_pitch = static_cast<int>(stack_.pitch);
    int64_t at_zero = rows_.first - rows_.low * rows_.pitch - origin_slice_ * stack_.pitch;
    start = static_cast<int>(static_cast<uint32_t>(at_zero));
    return true;
  }

  int bits_, column_shift_, column_mask_;
  bool index_in_16_bits_;
  int beyond_;
  bool even_ = true;
  int64_t origin_slice_ = 0;
  Progression rows_, stack_;
};

// Where full stages go: what is staged will be sampled, in order, and an empty stage comes back.
struct StageSink {
  StagedSamples* (*swap)(void* sampler);
  void* sampler;

  StagedSamples* take(bool even) const {
    StagedSamples* empty = swap(sampler);
    empty->even = even;
    return empty;
  }
};

}  // namespace
}  // namespace zox::ZOX_SET
