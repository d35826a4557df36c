// malloc and free as this program's objects see them (linker option --wrap): recorded, and failed on
// demand.
#pragma once

#include <cstddef>
#include <vector>

namespace zox_test {

struct WatchedMalloc {
  std::vector<size_t> requests;
  std::vector<void*> live;
  bool freed_unknown = false;
  size_t fail_at = 0;           // the request, counted from 1, that gets null; 0: none
  void* next_result = nullptr;  // handed out instead of system memory, once

  // Counts from now on, until stop().
  void start(size_t fail_at_request = 0);
  void stop();
};

extern WatchedMalloc watched_malloc;

}  // namespace zox_test
