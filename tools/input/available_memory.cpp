#include "available_memory.h"

#include <sys/resource.h>

#include <algorithm>
#include <fstream>
#include <string>

namespace zox::input {
namespace {

uint64_t of_machine() {
  std::ifstream file("/proc/meminfo");
  std::string key;
  for (uint64_t kilobytes = 0; file >> key >> kilobytes; file.ignore(256, '\n'))
    if (key == "MemAvailable:") return kilobytes * 1024;
  return UINT64_MAX;
}

// Files of one number; "max" and what is missing are no limit.
uint64_t number_in(const char* path) {
  std::ifstream file(path);
  uint64_t number = 0;
  return file >> number ? number : UINT64_MAX;
}

uint64_t of_control_group() {
  const uint64_t most = number_in("/sys/fs/cgroup/memory.max");
  const uint64_t taken = number_in("/sys/fs/cgroup/memory.current");
  if (most == UINT64_MAX || taken == UINT64_MAX) return UINT64_MAX;
  return most > taken ? most - taken : 0;
}

uint64_t of_limits() {
  rlimit limit{};
  if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return UINT64_MAX;
  return limit.rlim_cur;
}

}  // namespace

uint64_t available_memory() { return std::min({of_machine(), of_control_group(), of_limits()}); }

}  // namespace zox::input
