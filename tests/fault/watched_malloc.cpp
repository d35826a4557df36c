#include "watched_malloc.h"

#include <algorithm>

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier): the names that --wrap asks for
void* __real_malloc(size_t size);
void __real_free(void* block);
void* __wrap_malloc(size_t size);
void __wrap_free(void* block);
// NOLINTEND(bugprone-reserved-identifier)
}

namespace zox_test {

WatchedMalloc watched_malloc;

namespace {

bool watching = false;

// No request of the library that the tests grant is larger; a real 2 GiB would only slow them.
constexpr size_t kLargestGranted = size_t{1} << 30;

void* hand_out(size_t size) {
  WatchedMalloc& m = watched_malloc;
  if (m.requests.size() == m.fail_at || size > kLargestGranted) return nullptr;
  void* block = m.next_result != nullptr ? m.next_result : __real_malloc(size);
  m.live.push_back(block);
  return block;
}

}  // namespace

void WatchedMalloc::start(size_t fail_at_request) {
  requests.clear();
  live.clear();
  requests.reserve(16);
  live.reserve(16);
  freed_unknown = false;
  fail_at = fail_at_request;
  watching = true;
}

void WatchedMalloc::stop() {
  watching = false;
  next_result = nullptr;
}

}  // namespace zox_test

void* __wrap_malloc(size_t size) {
  using namespace zox_test;
  if (!watching) return __real_malloc(size);
  watched_malloc.requests.push_back(size);
  return hand_out(size);
}

void __wrap_free(void* block) {
  using namespace zox_test;
  if (!watching) return __real_free(block);
  WatchedMalloc& m = watched_malloc;
  const auto found = std::find(m.live.begin(), m.live.end(), block);
  if (found == m.live.end()) {
    m.freed_unknown = true;
    return;
  }
  m.live.erase(found);
  if (block != m.next_result) __real_free(block);
}
