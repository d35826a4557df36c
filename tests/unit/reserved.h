// Address space for voxels that lie gigabytes apart: nothing but the touched pages is ever there.
#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <cstdint>
#include <new>

namespace zox_unit {

class Reserved {
 public:
  explicit Reserved(size_t bytes) : bytes_(bytes) {
    memory_ =
        mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory_ == MAP_FAILED) throw std::bad_alloc();
  }
  Reserved(const Reserved&) = delete;
  Reserved& operator=(const Reserved&) = delete;
  ~Reserved() { munmap(memory_, bytes_); }

  uint8_t* at(size_t offset) const { return static_cast<uint8_t*>(memory_) + offset; }

 private:
  size_t bytes_;
  void* memory_;
};

}  // namespace zox_unit
