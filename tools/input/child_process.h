// A function run in a process of its own, which answers with bytes and a block of memory.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "voxel_memory.h"

namespace zox::input {

struct Limits {
  uint64_t memory;  // bytes on top of what this process has mapped
  double seconds;
};

// What a child gives: bytes, and a block of memory, which may be large.
struct Given {
  Given(std::string all) : bytes(std::move(all)) {}
  Given(std::string all, Mapping memory) : bytes(std::move(all)), block(std::move(memory)) {}
  std::string bytes;
  Mapping block;
};

struct Answer {
  std::string bytes;  // what was given; empty unless all of it came
  Mapping block;
  int signal = 0;  // that ended the process, if one did
  bool timed_out = false;
};

// Runs `work` in a child, whose standard streams lead nowhere, and collects what it returns. Of a block both
// processes hold no more at a time than one of them would. Throws std::system_error when there can be no
// child, and std::bad_alloc when there is no memory for the block.
Answer run_in_child(const Limits& limits, const std::function<Given()>& work);

}  // namespace zox::input
