#include "failing_memory.h"

#include <dlfcn.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <mutex>

namespace zox_test {
namespace {

// The allocator behind this one, found once; what the search itself asks for comes from a buffer.
struct Real {
  void* (*malloc)(size_t) = nullptr;
  void (*free)(void*) = nullptr;
  void* (*realloc)(void*, size_t) = nullptr;
  void* (*memalign)(size_t, size_t) = nullptr;
};
Real real;
std::byte early[1 << 16];
size_t early_used = 0;

template <class Function>
void find(Function& function, const char* name) {
  void* found = dlsym(RTLD_NEXT, name);
  std::memcpy(&function, &found, sizeof found);
}

bool is_early(const void* block) { return block >= early && block < early + sizeof early; }

bool ready() {
  static std::atomic<int> state{0};
  if (state == 2) return true;
  if (state == 1) return false;
  state = 1;
  find(real.free, "free");
  find(real.realloc, "realloc");
  find(real.memalign, "memalign");
  find(real.malloc, "malloc");
  state = 2;
  return true;
}

std::atomic<bool> watching{false};
std::atomic<size_t> requests{0};
size_t fail_first = 0, fail_count = 0;

std::mutex table_mutex;
const void* table[1 << 14];
size_t table_size = 0;

void remember(const void* block) {
  const std::lock_guard lock(table_mutex);
  if (block != nullptr && table_size < std::size(table)) table[table_size++] = block;
}
void forget(const void* block) {
  const std::lock_guard lock(table_mutex);
  const void** const end = table + table_size;
  const void** const found = std::find(table, end, block);
  if (found != end) *found = table[--table_size];
}

// False when this request is to fail.
bool granted() {
  if (!watching) return true;
  const size_t number = ++requests;
  if (number < fail_first || number - fail_first >= fail_count) return true;
  errno = ENOMEM;
  return false;
}

template <class Get>
void* hand_out(size_t size, Get get) {
  if (!ready()) {
    size_t at = (early_used + 15) / 16 * 16;
    early_used = at + size;
    return early_used <= sizeof early ? early + at : nullptr;
  }
  if (!granted()) return nullptr;
  void* block = get();
  if (watching) remember(block);
  return block;
}

}  // namespace

void fail_memory(size_t first, size_t count) {
  fail_first = first;
  fail_count = count;
  requests = 0;
  table_size = 0;
  watching = true;
}

MemoryCount count_memory() {
  watching = false;
  return {requests, table_size};
}

}  // namespace zox_test

using namespace zox_test;

extern "C" {

void* malloc(size_t size) {
  return hand_out(size, [=] { return real.malloc(size); });
}

void free(void* block) {
  if (block == nullptr || is_early(block)) return;
  forget(block);
  real.free(block);
}

void* calloc(size_t count, size_t size) {
  size_t bytes = 0;
  if (__builtin_mul_overflow(count, size, &bytes)) return nullptr;
  void* block = hand_out(bytes, [=] { return real.malloc(bytes); });
  return block == nullptr ? nullptr : std::memset(block, 0, bytes);
}

void* realloc(void* block, size_t size) {
  if (block == nullptr) return malloc(size);
  if (!granted()) return nullptr;
  void* moved = real.realloc(block, size);
  if (moved == nullptr) return nullptr;
  forget(block);
  if (watching) remember(moved);
  return moved;
}

void* aligned_alloc(size_t alignment, size_t size) {
  return hand_out(size, [=] { return real.memalign(alignment, size); });
}

void* memalign(size_t alignment, size_t size) { return aligned_alloc(alignment, size); }

int posix_memalign(void** block, size_t alignment, size_t size) {
  void* const found = aligned_alloc(alignment, size);
  if (found == nullptr) return ENOMEM;
  *block = found;
  return 0;
}

}  // extern "C"
