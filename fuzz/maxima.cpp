#include <algorithm>

#include "differ.h"
#include "filled_planes.h"
#include "fuzz_operations.h"

namespace zox_fuzz {

void fuzz_maximum(int number, zox_test::Random random) {
  const zox_test::Maximum& maximum = zox_test::kMaxima[number];
  zox_test::FilledPlanes planes(maximum, random);
  if (maximum.run(zox_test::kReference, planes.input(), planes.prefilled_maxima()) != ZOX_STS_NO_ERROR)
    disagree("the status of a maximum");
  const std::vector<uint8_t> expected = planes.maxima();
  for (const zox_test::Operations* target : zox_test::all_targets()) {
    if (!target->supported()) continue;
    const int status = maximum.run(*target, planes.input(), planes.prefilled_maxima());
    const std::vector<uint8_t> actual = planes.maxima();
    if (status == ZOX_STS_NO_ERROR && actual == expected) continue;
    const auto first = std::mismatch(expected.begin(), expected.end(), actual.begin()).first;
    disagree(std::string(maximum.name) + ", " + target->name + ", byte " +
             std::to_string(first - expected.begin()) + ": " + planes.describe());
  }
}

}  // namespace zox_fuzz
