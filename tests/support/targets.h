// What the tests run a caster on: each instruction set by name, and the exported functions.
#pragma once

#include <vector>

#include "operation_list.h"

namespace zox_test {

struct Target {
  const char* name;
  const zox::Operations* operations;  // null: the exported functions, which pick a set themselves

  bool supported() const { return operations == nullptr || operations->supported(); }
  zox::RayCast cast(const Caster& caster) const {
    return operations == nullptr ? caster.exported : operations->*caster.member;
  }
};

inline std::vector<Target> all_targets() {
  std::vector<Target> targets;
  for (const zox::Operations* operations : zox::kAllOperations)
    targets.push_back({operations->name, operations});
  targets.push_back({"exported", nullptr});
  return targets;
}

}  // namespace zox_test
