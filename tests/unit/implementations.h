// Whoever computes an operation: the plain reference, the exported functions under both names, and
// every instruction set that this processor runs. All of them have to pass every test.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "operation_list.h"

namespace zox_test {

using zox::Operations;
using zox_test::Caster;

std::vector<const Operations*> implementations();

// Those that belong to the library: only they take scratch memory and can run out of it.
bool in_library(const Operations& implementation);

using Chooses = bool (*)(const Caster&);
std::vector<const Caster*> casters_where(Chooses chooses);

using CasterCase = std::tuple<const Operations*, const Caster*>;
std::string implementation_name(const testing::TestParamInfo<const Operations*>& info);
std::string case_name(const testing::TestParamInfo<CasterCase>& info);

class CasterTest : public testing::TestWithParam<CasterCase> {
 protected:
  const Operations& implementation() const { return *std::get<0>(GetParam()); }
  const Caster& caster() const { return *std::get<1>(GetParam()); }
  zox::RayCast cast() const { return implementation().*caster().member; }
};

class OperationsTest : public testing::TestWithParam<const Operations*> {
 protected:
  const Operations& operations() const { return *GetParam(); }
};

}  // namespace zox_test

#define INSTANTIATE_FOR_CASTERS(suite, chooses)                                                   \
  INSTANTIATE_TEST_SUITE_P(All, suite,                                                            \
                           testing::Combine(testing::ValuesIn(zox_test::implementations()),       \
                                            testing::ValuesIn(zox_test::casters_where(chooses))), \
                           zox_test::case_name)

#define INSTANTIATE_FOR_OPERATIONS(suite)                                              \
  INSTANTIATE_TEST_SUITE_P(All, suite, testing::ValuesIn(zox_test::implementations()), \
                           zox_test::implementation_name)
