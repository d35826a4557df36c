#include "voxel_memory.h"

#include <sys/mman.h>

#include <new>

#include "format.h"
#include "text.h"

namespace zox::input {
namespace {

constexpr size_t kLargePage = size_t{1} << 21;

size_t rounded_up(size_t bytes, size_t to) { return (bytes + to - 1) / to * to; }

Mapping map_anonymous(size_t bytes) {
  void* memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  return Mapping(memory, Unmap{bytes});
}

// Begins and ends at multiples of a large page.
Mapping map_large_pages(size_t bytes) {
  Mapping all = map_anonymous(bytes + kLargePage);
  auto* const begin = static_cast<std::byte*>(all.get());
  const size_t front = (kLargePage - reinterpret_cast<uintptr_t>(begin) % kLargePage) % kLargePage;
  if (front > 0) munmap(begin, front);
  munmap(begin + front + bytes, kLargePage - front);
  static_cast<void>(all.release());
  madvise(begin + front, bytes, MADV_HUGEPAGE);
  return Mapping(begin + front, Unmap{bytes});
}

}  // namespace

// Large pages spare most of the faults by which memory comes, which else take as long as unpacking voxels.
Mapping map_zeros(uint64_t bytes) {
  if (bytes > SIZE_MAX / 2) throw std::bad_alloc();
  return bytes < kLargePage ? map_anonymous(bytes) : map_large_pages(rounded_up(bytes, kLargePage));
}

std::byte* VoxelMemory::allocate(uint64_t bytes, const std::string& path) {
  if (bytes > limit_)
    refuse(quoted(path) + " needs " + std::to_string(bytes) + " bytes of memory, of which " +
           std::to_string(limit_) + " are available.");
  block_ = map_zeros(bytes);
  return static_cast<std::byte*>(block_.get());
}

}  // namespace zox::input
