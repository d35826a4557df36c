// Who computes an operation, and for which ray casters: the cases of a test.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "effort.h"
#include "operation_list.h"

namespace zox_test {

using Targets = std::vector<const Operations*>;

// The library: the exported functions under both names, and every instruction set that this processor runs.
inline Targets library() {
  Targets all = {&kExported, &kSecondNames};
  for (const Operations* set : zox::kAllOperations) {
    if (set->supported()) all.push_back(set);
  }
  return all;
}

// And the plain reference, which has to pass all that is worked out by hand.
inline Targets implementations() {
  Targets all = library();
  all.push_back(&kReference);
  return all;
}

using Chooses = bool (*)(const Caster&);
inline bool every_caster(const Caster&) { return true; }
inline bool slice_stacks(const Caster& c) { return !c.blocked(); }
inline std::vector<const Caster*> casters_where(Chooses chooses) {
  std::vector<const Caster*> chosen;
  for (const Caster& caster : kCasters) {
    if (chooses(caster)) chosen.push_back(&caster);
  }
  return chosen;
}

class OperationsTest : public testing::TestWithParam<const Operations*> {
 protected:
  void SetUp() override {
    if (!operations().supported()) GTEST_SKIP() << "this processor lacks " << operations().name;
  }
  const Operations& operations() const { return *GetParam(); }
};

// What operations are compared on one by one: ray casters, maxima.
template <class Operation>
class ComparisonTest : public testing::TestWithParam<std::tuple<const Operation*, const Operations*>> {
 protected:
  void SetUp() override {
    if (!target().supported()) GTEST_SKIP() << "this processor lacks " << target().name;
  }
  const Operation& operation() const { return *std::get<0>(this->GetParam()); }
  const Operations& target() const { return *std::get<1>(this->GetParam()); }
};

class CasterTest : public ComparisonTest<Caster> {
 protected:
  const Caster& caster() const { return operation(); }
  zox::RayCast cast() const { return target().*caster().member; }
};

// Every target has seeds of its own, so that all of them together see more batches.
inline Seeds seeds_of(const Operations& target, int count) {
  const Targets all = all_targets();
  return seeds(1000000u * static_cast<uint64_t>(std::find(all.begin(), all.end(), &target) - all.begin()),
               count);
}

inline std::string target_name(const testing::TestParamInfo<const Operations*>& info) {
  return info.param->name;
}

struct CaseName {
  template <class Info>
  std::string operator()(const Info& info) const {
    return std::string(std::get<0>(info.param)->name) + "_" + std::get<1>(info.param)->name;
  }
};

}  // namespace zox_test

#define INSTANTIATE_CASTERS(suite, targets, chooses)                                                     \
  INSTANTIATE_TEST_SUITE_P(                                                                              \
      All, suite,                                                                                        \
      testing::Combine(testing::ValuesIn(zox_test::casters_where(chooses)), testing::ValuesIn(targets)), \
      zox_test::CaseName())

#define INSTANTIATE_FOR_CASTERS(suite, chooses) \
  INSTANTIATE_CASTERS(suite, zox_test::implementations(), chooses)

#define INSTANTIATE_FOR_OPERATIONS(suite) \
  INSTANTIATE_TEST_SUITE_P(All, suite, testing::ValuesIn(zox_test::implementations()), zox_test::target_name)
