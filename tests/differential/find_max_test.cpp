// Random batches through the maxima, plain and masked, on every instruction set.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "crash_note.h"
#include "effort.h"
#include "filled_planes.h"

namespace zox_test {
namespace {

using Parameter = std::tuple<int, int>;

class MaximumTest : public testing::TestWithParam<Parameter> {};

TEST_P(MaximumTest, MatchesReference) {
  const Maximum& maximum = kMaxima[std::get<0>(GetParam())];
  const int target_index = std::get<1>(GetParam());
  const Operations& target = *all_targets()[static_cast<size_t>(target_index)];
  if (!target.supported()) GTEST_SKIP() << "this processor lacks " << target.name;
  const Seeds chosen = seeds(1000000u * static_cast<uint64_t>(target_index), 2000);
  for (uint64_t seed = chosen.first; seed < chosen.first + chosen.count; ++seed) {
    FilledPlanes batch(maximum, Random(seed * kMaximumCount + 77));
    const std::string what = std::string(maximum.name) + " " + target.name + " seed " + std::to_string(seed) +
                             ": " + batch.describe();
    set_crash_note(what);
    ASSERT_EQ(0, maximum.run(kReference, batch.input(), batch.prefilled_maxima()));
    const std::vector<uint8_t> expected = batch.maxima();
    ASSERT_EQ(0, maximum.run(target, batch.input(), batch.prefilled_maxima())) << what;
    const std::vector<uint8_t> actual = batch.maxima();
    const auto differs = std::mismatch(expected.begin(), expected.end(), actual.begin());
    ASSERT_TRUE(differs.first == expected.end())
        << "byte " << differs.first - expected.begin() << " of the maxima (one ray has "
        << maximum.element_size << "): expected " << int{*differs.first} << ", got " << int{*differs.second}
        << "\n"
        << what;
  }
}

INSTANTIATE_TEST_SUITE_P(Differential, MaximumTest,
                         testing::Combine(testing::Range(0, kMaximumCount),
                                          testing::Range(0, static_cast<int>(all_targets().size()))),
                         [](const testing::TestParamInfo<Parameter>& info) {
                           return std::string(kMaxima[std::get<0>(info.param)].name) + "_" +
                                  all_targets()[static_cast<size_t>(std::get<1>(info.param))]->name;
                         });

}  // namespace
}  // namespace zox_test
