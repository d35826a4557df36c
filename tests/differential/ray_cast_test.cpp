// Random batches: every ray caster on every instruction set against the plain reference, byte for
// byte, stray writes included. ZOX_TEST_SEED=n runs one batch again.
#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "crash_note.h"
#include "effort.h"
#include "random_batch.h"

namespace zox_test {
namespace {

using Parameter = std::tuple<int, int>;  // indices of caster and target

class RayCast : public testing::TestWithParam<Parameter> {};

TEST_P(RayCast, MatchesReference) {
  const Caster& caster = kCasters[std::get<0>(GetParam())];
  const int target_index = std::get<1>(GetParam());
  const Operations& target = *all_targets()[static_cast<size_t>(target_index)];
  if (!target.supported()) GTEST_SKIP() << "this processor lacks " << target.name;
  const zox::RayCast cast = target.*caster.member;
  // Every target has seeds of its own, so that all of them together see more batches.
  const Seeds chosen = seeds(1000000u * static_cast<uint64_t>(target_index), 2500);
  for (uint64_t seed = chosen.first; seed < chosen.first + chosen.count; ++seed) {
    set_crash_note(std::string("making ") + caster.name + " seed " + std::to_string(seed));
    RandomBatch batch(caster, seed);
    set_crash_note("reference, " + batch.describe());
    const RandomBatch::Outcome expected = batch.run(caster.reference);
    set_crash_note(std::string(target.name) + ", " + batch.describe());
    const RandomBatch::Outcome actual = batch.run(cast);
    ASSERT_EQ(expected.status, actual.status) << target.name << ", " << batch.describe();
    ASSERT_TRUE(expected.planes == actual.planes)
        << target.name << ", " << batch.planes().first_difference(expected.planes, actual.planes) << "\n"
        << batch.describe();
  }
}

INSTANTIATE_TEST_SUITE_P(Differential, RayCast,
                         testing::Combine(testing::Range(0, kCasterCount),
                                          testing::Range(0, static_cast<int>(all_targets().size()))),
                         [](const testing::TestParamInfo<Parameter>& info) {
                           return std::string(kCasters[std::get<0>(info.param)].name) + "_" +
                                  all_targets()[static_cast<size_t>(std::get<1>(info.param))]->name;
                         });

}  // namespace
}  // namespace zox_test
