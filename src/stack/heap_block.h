// Heap scratch of one call: taken through the library's own allocator, which a preloaded library
// may replace, and given back on every way out.
#pragma once

#include "zox_volume_names.h"

namespace zox::ZOX_SET {
namespace {

class HeapBlock {
 public:
  HeapBlock() = default;
  HeapBlock(const HeapBlock&) = delete;
  HeapBlock& operator=(const HeapBlock&) = delete;
  ~HeapBlock() {
    if (block_) __zox_Free(block_);
  }

  // Bytes as a 32-bit number, wrapped if the product did.
  bool take(int bytes) {
    block_ = __zox_Malloc(bytes);
    return block_ != nullptr;
  }

  template <class T>
  T* as() const {
    return static_cast<T*>(block_);
  }

 private:
  void* block_ = nullptr;
};

}  // namespace
}  // namespace zox::ZOX_SET
