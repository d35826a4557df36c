// The process's allocator: counts, fails on demand, and knows what was not given back.
#pragma once

#include <cstddef>

namespace zox_test {

// Counts requests from now on; from number `first` (counted from 1) the next `count` get nothing.
void fail_memory(size_t first, size_t count);

// Ends that. How many requests there were, and how many of their blocks were not given back.
struct MemoryCount {
  size_t requests, kept;
};
MemoryCount count_memory();

}  // namespace zox_test
