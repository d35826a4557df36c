// What one benchmark case measures: the same work, done by several contenders.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace bench {

// size is the volume's edge (its depth too, unless slices are given), the number of planes of a maximum,
// or the edge of a window/level image.
struct Case {
  std::string operation;
  int size;
  std::string view, storage, load;
  bool quick;  // part of the short run
  int slices = 0;

  std::string shape() const {
    std::string text = std::to_string(size);
    if (slices > 0) text.append("x").append(std::to_string(slices));
    return text;
  }
  std::string name() const { return operation + "/" + shape() + "/" + view + "/" + storage + "/" + load; }
};

struct Contender {
  std::string name;
  std::function<int(int batch)> run;  // the status
};

struct Workload {
  int batches = 0;
  int64_t samples = 0;                // of all batches together
  std::span<std::byte> output;        // everything that a run may write
  std::vector<Contender> contenders;  // the reference is first
  std::function<void()> evict;        // before each timed run; empty where the caches may keep what they have
};

// Every case, those of one volume side by side.
std::vector<Case> all_cases();

// The reference, the scalar lists where they apply, and the given instruction sets as far as this
// processor runs them and they have the operation.
Workload make_workload(const Case& c, const std::vector<std::string>& sets);

}  // namespace bench
