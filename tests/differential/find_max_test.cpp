// Random batches through the maxima, plain and masked, on every instruction set.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "cases.h"
#include "crash_note.h"
#include "filled_planes.h"

namespace zox_test {
namespace {

class MaximumTest : public ComparisonTest<Maximum> {};

TEST_P(MaximumTest, MatchesReference) {
  const Maximum& maximum = operation();
  const Seeds chosen = seeds_of(target(), 2000);
  for (uint64_t seed = chosen.first; seed < chosen.first + chosen.count; ++seed) {
    FilledPlanes batch(maximum, Random(seed * kMaximumCount + 77));
    const std::string what = std::string(maximum.name) + " " + target().name + " seed " +
                             std::to_string(seed) + ": " + batch.describe();
    set_crash_note(what);
    ASSERT_EQ(0, maximum.run(kReference, batch.input(), batch.prefilled_maxima()));
    const std::vector<uint8_t> expected = batch.maxima();
    ASSERT_EQ(0, maximum.run(target(), batch.input(), batch.prefilled_maxima())) << what;
    const std::vector<uint8_t> actual = batch.maxima();
    const auto differs = std::mismatch(expected.begin(), expected.end(), actual.begin());
    ASSERT_TRUE(differs.first == expected.end())
        << "byte " << differs.first - expected.begin() << " of the maxima (one ray has "
        << maximum.element_size << "): expected " << int{*differs.first} << ", got " << int{*differs.second}
        << "\n"
        << what;
  }
}

std::vector<const Maximum*> every_maximum() {
  std::vector<const Maximum*> all;
  for (const Maximum& maximum : kMaxima) all.push_back(&maximum);
  return all;
}

INSTANTIATE_TEST_SUITE_P(All, MaximumTest,
                         testing::Combine(testing::ValuesIn(every_maximum()),
                                          testing::ValuesIn(all_targets())),
                         CaseName());

}  // namespace
}  // namespace zox_test
