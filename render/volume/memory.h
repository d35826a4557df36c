// Large blocks of memory, and how much of it there is.
#pragma once

#include <cstddef>
#include <cstdint>

namespace render {

// A zeroed block; pages that nobody touches cost nothing.
class Memory {
 public:
  Memory() = default;
  explicit Memory(uint64_t bytes);
  ~Memory();
  Memory(Memory&& other) noexcept;
  Memory& operator=(Memory&& other) noexcept;
  std::byte* data() const { return data_; }

 private:
  void* block_ = nullptr;
  std::byte* data_ = nullptr;  // within it
  size_t bytes_ = 0;
};

// Refuses with ZOX_RENDER_NO_MEMORY what is more than the limit (0: than the system has).
void require_memory(uint64_t wanted, uint64_t limit);

}  // namespace render
