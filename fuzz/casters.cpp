#include "differ.h"
#include "fuzz_operations.h"
#include "random_batch.h"

namespace zox_fuzz {

using zox_test::RandomBatch;

void fuzz_caster(int number, const uint8_t* bytes, size_t size) {
  const zox_test::Caster& caster = zox_test::kCasters[number];
  RandomBatch batch(caster, zox_test::Random(bytes, size), zox_test::Validity::kBeyond);
  const RandomBatch::Outcome expected = batch.run(caster.reference);
  static const auto targets = zox_test::all_targets();
  for (const zox_test::Operations* target : targets) {
    if (!target->supported()) continue;
    const RandomBatch::Outcome actual = batch.run(target->*caster.member);
    if (actual.status == expected.status && actual.planes == expected.planes) continue;
    disagree(std::string(target->name) + ", " +
             batch.planes().first_difference(expected.planes, actual.planes) + "\n" + batch.describe());
  }
}

}  // namespace zox_fuzz
