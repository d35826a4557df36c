#include "volumes.h"

#include <cstdlib>
#include <cstring>
#include <numeric>
#include <stdexcept>

namespace zox_unit {
namespace {

void store(uint8_t* at, int element_size, int value) {
  const int16_t low = static_cast<int16_t>(value);
  std::memcpy(at, &low, static_cast<size_t>(element_size));  // little-endian: the low byte comes first
}

}  // namespace

void Blocked::Free::operator()(void* memory) const { std::free(memory); }

Blocked::Blocked(int element_size, int size, int depth) : element_size_(element_size), bricks_(1) {
  while (bricks_ * 128 <= size) bricks_ *= 2;
  const size_t bricks =
      static_cast<size_t>(bricks_) * static_cast<size_t>(bricks_) * static_cast<size_t>((depth + 31) / 32);
  // calloc: the pages of a large volume that no test touches are never there.
  data_.reset(static_cast<uint8_t*>(std::calloc(bricks * 131072, static_cast<size_t>(element_size))));
  volume_.data = data_.get();
  volume_.size = size;
}

size_t Blocked::index(int x, int y, int z) const {
  const int in_cell = x % 4 + 4 * (y % 4 + 4 * (z % 2));
  const int cell = x % 64 / 4 + 16 * (y % 64 / 4 + 16 * (z % 32 / 2));
  const int brick = x / 64 + bricks_ * (y / 64 + bricks_ * (z / 32));
  return static_cast<size_t>(brick) * 131072 + static_cast<size_t>(cell) * 32 + static_cast<size_t>(in_cell);
}

void Blocked::set_element(size_t index, int value) {
  store(data_.get() + index * static_cast<size_t>(element_size_), element_size_, value);
}

void Blocked::fill(const std::function<int(int, int, int)>& value) {
  for (int z = 0; z < 16; ++z) {
    for (int y = 0; y < 16; ++y) {
      for (int x = 0; x < 16; ++x) set(x, y, z, value(x, y, z));
    }
  }
}

Stack::Voxel Stack::voxel_of(const zox_test::Caster& caster) {
  if (caster.bit()) return Voxel::kBit;
  return caster.element_size() == 1 ? Voxel::kByte : Voxel::kShort;
}

Stack::Stack(Voxel voxel, int columns, int rows, int slices)
    : voxel_(voxel),
      columns_(columns),
      rows_(rows),
      nslices_(slices),
      pitch_(columns * (voxel == Voxel::kShort ? 2 : 1)) {
  // One slice more than the operation is told of: trilinear casters read its pointer.
  for (int s = 0; s <= slices; ++s) {
    slices_.emplace_back(static_cast<size_t>(pitch_) * static_cast<size_t>(rows));
  }
  for (int y = -1; y < rows; ++y) rowoffs_.push_back(y * pitch_);
  regions({0.0, static_cast<double>(slices)}, {0}, {1.0});
  pretend(slices);
}

Stack& Stack::set(int x, int y, int slice, int value) {
  uint8_t* row = slices_[static_cast<size_t>(slice)].data() + static_cast<ptrdiff_t>(y) * pitch_;
  if (voxel_ == Voxel::kByte) store(row + x, 1, value);
  if (voxel_ == Voxel::kShort) store(row + 2 * x, 2, value);
  if (voxel_ == Voxel::kBit) {
    if (x > 8) throw std::logic_error("no bit for this column");
    const uint8_t mask = x == 8 ? 0x01 : static_cast<uint8_t>(0x80 >> x);
    uint8_t& byte = row[x / 8];
    byte = static_cast<uint8_t>(value != 0 ? byte | mask : byte & ~mask);
  }
  return *this;
}

Stack& Stack::fill_slice(int slice, int value) {
  const int columns = voxel_ == Voxel::kBit && columns_ > 9 ? 9 : columns_;
  for (int y = 0; y < rows_; ++y) {
    for (int x = 0; x < columns; ++x) set(x, y, slice, value);
  }
  return *this;
}

Stack& Stack::fill(const std::function<int(int, int, int)>& value) {
  for (int s = 0; s <= nslices_; ++s) {
    for (int y = 0; y < rows_; ++y) {
      for (int x = 0; x < columns_; ++x) set(x, y, s, value(x, y, s));
    }
  }
  return *this;
}

Stack& Stack::regions(std::vector<double> bounds, std::vector<int32_t> first_slice,
                      std::vector<double> scale) {
  regbounds_ = std::move(bounds);
  regslice_ = std::move(first_slice);
  regscale_ = std::move(scale);
  return *this;
}

Stack& Stack::set_byte(int byte, int y, int slice, uint8_t value) {
  slices_[static_cast<size_t>(slice)]
         [static_cast<size_t>(y) * static_cast<size_t>(pitch_) + static_cast<size_t>(byte)] = value;
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
  for (const auto& slice : slices_) {
    pointers_.push_back(slice.data() + (upside_down_ ? (rows_ - 1) * pitch_ : 0));
  }
  volume_.slices = pointers_.data();
  volume_.rowoffs = rowoffs_.data() + 1;
  volume_.nregions = static_cast<int32_t>(regscale_.size());
  volume_.regslice = regslice_.data();
  volume_.regbounds = regbounds_.data();
  volume_.regscale = regscale_.data();
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

}  // namespace zox_unit
