// A function run in a process of its own, which answers with bytes.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace zox::input {

struct Limits {
  uint64_t memory;  // bytes on top of what this process has mapped
  double seconds;
};

struct Answer {
  std::string bytes;  // as far as they came
  int signal = 0;     // that ended the process, if one did
  bool timed_out = false;
};

// Runs `work` in a child, whose standard streams lead nowhere, and collects what it returns. Throws
// std::system_error when there can be no child.
Answer run_in_child(const Limits& limits, const std::function<std::string()>& work);

}  // namespace zox::input
