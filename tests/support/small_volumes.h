// Volumes in a few lines, voxels set as plain numbers.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "blocked_volume.h"
#include "guarded_buffer.h"
#include "operation_list.h"
#include "regions.h"

namespace zox_test {

using FillBytes = std::function<void(uint8_t* at, size_t bytes)>;

// A bricked volume.
class Blocked {
 public:
  Blocked(int element_size, int size, int depth);

  void set(int x, int y, int z, int value);
  void set_element(size_t index, int value);
  void fill(const std::function<int(int x, int y, int z)>& value);  // the first 16 voxels an axis
  void fill_memory(const FillBytes& fill) { fill(data_.data(), data_.size()); }

  const zox_Volume& volume() const { return volume_; }

 private:
  int element_size_;
  int edge_;  // voxels in x and in y
  GuardedBuffer data_;
  zox_Volume volume_{};
};

// A slice stack of separate slices with some room around every row. A new stack has one region:
// slice s lies at z = s, from 0 to the number of slices.
class Stack {
 public:
  // Bits may be set in the columns 0 to 8 only: the library reads no bits of other columns below 36.
  Stack(const Caster& caster, int columns, int rows, int slices);

  Stack& set(int x, int y, int slice, int value);
  Stack& fill(const std::function<int(int x, int y, int slice)>& value);
  void fill_memory(const FillBytes& fill);  // slice after slice

  // Bounds are one more than the others.
  Stack& regions(std::vector<double> bounds, std::vector<int32_t> first_slice, std::vector<double> scale);

  // A byte as it lies in memory, `byte` bytes from the start of the row.
  Stack& set_byte(int byte, int y, int slice, uint8_t value);

  // The rows the other way round, by negative offsets from the last one.
  Stack& turn_upside_down();

  // Where the table of row offsets is read at -1.
  Stack& row_before_first(int y);

  // Tells the operation of another number of slices than there are.
  Stack& pretend(int32_t nslices);

  const zox_Volume& volume();

 private:
  uint8_t* row(int y, int slice);

  bool bit_;
  int element_size_;
  int columns_, rows_, nslices_, pitch_;
  std::vector<std::vector<uint8_t>> slices_;
  std::vector<const void*> pointers_;  // made anew for every record, so that stacks can be copied
  bool upside_down_ = false;
  std::vector<int32_t> rowoffs_;  // with one entry before the first row's
  Regions regions_;
  zox_Volume volume_{};
};

// Eight by eight by eight voxels for any caster, in a volume of the form that it takes.
class Cube {
 public:
  explicit Cube(const Caster& caster)
      : is_blocked_(caster.blocked()), blocked_(caster.element_size(), 64, 32), stack_(caster, 9, 9, 8) {}

  Cube& set(int x, int y, int z, int value);
  const zox_Volume& volume() { return is_blocked_ ? blocked_.volume() : stack_.volume(); }

 private:
  bool is_blocked_;
  Blocked blocked_;
  Stack stack_;
};

}  // namespace zox_test
