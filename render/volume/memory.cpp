#include "volume/memory.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>

#include "failure.h"

namespace render {
namespace {

constexpr size_t kLargePage = size_t{1} << 21;

// The first number of a file after the given word; `otherwise` where there is none.
uint64_t number_in(const char* path, const char* format, uint64_t otherwise) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, "re"), std::fclose);
  if (!file) return otherwise;
  char line[256];
  unsigned long long number = 0;
  while (std::fgets(line, sizeof line, file.get()))
    if (std::sscanf(line, format, &number) == 1) return number;
  return otherwise;
}

// What the system can still give without swapping, within the limit of the control group if there is one.
uint64_t available_memory() {
  const uint64_t kilobytes = number_in("/proc/meminfo", "MemAvailable: %llu", UINT64_MAX / 1024);
  const uint64_t group = number_in("/sys/fs/cgroup/memory.max", "%llu", UINT64_MAX);
  const uint64_t used = group == UINT64_MAX ? 0 : number_in("/sys/fs/cgroup/memory.current", "%llu", 0);
  return std::min(kilobytes * 1024, group - std::min(used, group));
}

}  // namespace

Memory::Memory(uint64_t bytes) {
  if (bytes == 0) return;
  // Rays jump through a volume: large pages, which begin at multiples of their size, spare misses of the
  // address tables, and most of the faults by which memory comes.
  bytes_ = bytes + kLargePage;
  block_ = mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (block_ == MAP_FAILED)
    fail(ZOX_RENDER_NO_MEMORY, std::to_string(bytes) + " bytes of memory were wanted and could not be had.");
  const uintptr_t address = reinterpret_cast<uintptr_t>(block_);
  data_ = static_cast<std::byte*>(block_) + (kLargePage - address % kLargePage) % kLargePage;
  madvise(data_, bytes, MADV_HUGEPAGE);
}

Memory::~Memory() {
  if (data_) munmap(block_, bytes_);
}

Memory::Memory(Memory&& other) noexcept { *this = std::move(other); }

Memory& Memory::operator=(Memory&& other) noexcept {
  std::swap(block_, other.block_);
  std::swap(data_, other.data_);
  std::swap(bytes_, other.bytes_);
  return *this;
}

void require_memory(uint64_t wanted, uint64_t limit) {
  const uint64_t available = limit ? limit : available_memory();
  if (wanted > available)
    fail(ZOX_RENDER_NO_MEMORY, "The volume needs " + std::to_string(wanted) + " bytes of memory and " +
                                   std::to_string(available) + " are available.");
}

}  // namespace render
