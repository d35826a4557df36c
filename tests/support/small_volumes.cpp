#include "small_volumes.h"

#include <zox_volume_layout.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace zox_test {
namespace {

void store(uint8_t* at, int element_size, int value) {
  const int16_t low = static_cast<int16_t>(value);
  std::memcpy(at, &low, static_cast<size_t>(element_size));  // little-endian: the low byte comes first
}

}  // namespace

// The pages of a large volume that no test touches are never there.
Blocked::Blocked(int element_size, int size, int depth)
    : element_size_(element_size),
      edge_(blocked_edge(size)),
      data_(zox_blocked_elements(edge_, depth) * static_cast<size_t>(element_size),
            GuardedBuffer::Flush::kEnd) {
  volume_.data = data_.data();
  volume_.size = size;
}

void Blocked::set(int x, int y, int z, int value) { set_element(zox_blocked_index(edge_, x, y, z), value); }

void Blocked::set_element(size_t index, int value) {
  store(data_.data() + index * static_cast<size_t>(element_size_), element_size_, value);
}

void Blocked::fill(const std::function<int(int, int, int)>& value) {
  for (int z = 0; z < 16; ++z) {
    for (int y = 0; y < 16; ++y) {
      for (int x = 0; x < 16; ++x) set(x, y, z, value(x, y, z));
    }
  }
}

Stack::Stack(const Caster& caster, int columns, int rows, int slices)
    : bit_(caster.bit()),
      element_size_(caster.element_size()),
      columns_(columns),
      rows_(rows),
      nslices_(slices),
      pitch_(columns * element_size_) {
  // One slice more than the operation is told of: trilinear casters read its pointer.
  for (int s = 0; s <= slices; ++s) {
    slices_.emplace_back(static_cast<size_t>(pitch_) * static_cast<size_t>(rows));
  }
  for (int y = -1; y < rows; ++y) rowoffs_.push_back(y * pitch_);
  regions({0.0, static_cast<double>(slices)}, {0}, {1.0});
  pretend(slices);
}

uint8_t* Stack::row(int y, int slice) {
  return slices_[static_cast<size_t>(slice)].data() + static_cast<ptrdiff_t>(y) * pitch_;
}

Stack& Stack::set(int x, int y, int slice, int value) {
  if (!bit_) {
    store(row(y, slice) + x * element_size_, element_size_, value);
    return *this;
  }
  if (x > 8) throw std::logic_error("no bit for this column");
  const uint8_t mask = x == 8 ? 0x01 : static_cast<uint8_t>(0x80 >> x);
  uint8_t& byte = row(y, slice)[x / 8];
  byte = static_cast<uint8_t>(value != 0 ? byte | mask : byte & ~mask);
  return *this;
}

Stack& Stack::fill(const std::function<int(int, int, int)>& value) {
  const int columns = bit_ ? std::min(columns_, 9) : columns_;
  for (int s = 0; s <= nslices_; ++s) {
    for (int y = 0; y < rows_; ++y) {
      for (int x = 0; x < columns; ++x) set(x, y, s, value(x, y, s));
    }
  }
  return *this;
}

void Stack::fill_memory(const FillBytes& fill) {
  for (auto& slice : slices_) fill(slice.data(), slice.size());
}

Stack& Stack::regions(std::vector<double> bounds, std::vector<int32_t> first_slice,
                      std::vector<double> scale) {
  regions_ = {std::move(bounds), std::move(first_slice), std::move(scale)};
  return *this;
}

Stack& Stack::set_byte(int byte, int y, int slice, uint8_t value) {
  row(y, slice)[byte] = value;
  return *this;
}

Stack& Stack::turn_upside_down() {
  upside_down_ = true;
  for (int32_t& offset : rowoffs_) offset = -offset;
  return *this;
}

Stack& Stack::row_before_first(int y) {
  rowoffs_[0] = rowoffs_[static_cast<size_t>(y) + 1];
  return *this;
}

Stack& Stack::pretend(int32_t nslices) {
  volume_.nslices = nslices;
  return *this;
}

const zox_Volume& Stack::volume() {
  pointers_.clear();
  for (int s = 0; s <= nslices_; ++s) pointers_.push_back(row(upside_down_ ? rows_ - 1 : 0, s));
  volume_.slices = pointers_.data();
  volume_.rowoffs = rowoffs_.data() + 1;
  regions_.put_into(volume_);
  return volume_;
}

Cube& Cube::set(int x, int y, int z, int value) {
  if (is_blocked_) {
    blocked_.set(x, y, z, value);
  } else {
    stack_.set(x, y, z, value);
  }
  return *this;
}

}  // namespace zox_test
