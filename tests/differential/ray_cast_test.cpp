// Random batches: every ray caster on every instruction set against the plain reference, byte for
// byte, stray writes included. ZOX_TEST_SEED=n runs one batch again.
#include <gtest/gtest.h>

#include <string>

#include "cases.h"
#include "crash_note.h"
#include "random_batch.h"

namespace zox_test {
namespace {

class RayCast : public CasterTest {};

TEST_P(RayCast, MatchesReference) {
  const Seeds chosen = seeds_of(target(), 2500);
  for (uint64_t seed = chosen.first; seed < chosen.first + chosen.count; ++seed) {
    set_crash_note(std::string("making ") + caster().name + " seed " + std::to_string(seed));
    RandomBatch batch(caster(), seed);
    set_crash_note("reference, " + batch.describe());
    const RandomBatch::Outcome expected = batch.run(caster().reference);
    set_crash_note(std::string(target().name) + ", " + batch.describe());
    const RandomBatch::Outcome actual = batch.run(cast());
    ASSERT_EQ(expected.status, actual.status) << target().name << ", " << batch.describe();
    ASSERT_TRUE(expected.planes == actual.planes)
        << target().name << ", " << batch.planes().first_difference(expected.planes, actual.planes) << "\n"
        << batch.describe();
  }
}

INSTANTIATE_CASTERS(RayCast, all_targets(), every_caster);

}  // namespace
}  // namespace zox_test
