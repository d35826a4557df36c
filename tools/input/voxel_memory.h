// Memory that holds a volume: in the process that reads it, and in the one that it is handed to.
#pragma once

#include <cstdint>
#include <string>

#include "scan.h"

namespace zox::input {

// Memory of zeros, of at least so many bytes. Throws std::bad_alloc.
Mapping map_zeros(uint64_t bytes);

// Where a reader puts the voxels.
class VoxelMemory {
 public:
  // `limit` bytes may be taken in all.
  explicit VoxelMemory(uint64_t limit) : limit_(limit) {}

  // Memory of zeros, once. Throws Failure when there is less.
  std::byte* allocate(uint64_t bytes, const std::string& path);

  uint64_t limit() const { return limit_; }
  const Mapping& block() const { return block_; }
  Mapping take() { return std::move(block_); }

 private:
  uint64_t limit_;
  Mapping block_;
};

}  // namespace zox::input
