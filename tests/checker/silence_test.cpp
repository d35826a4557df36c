// The checker has nothing to say about any valid random batch, and changes nothing of it.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>

#include "effort.h"
#include "random_batch.h"
#include "violations.h"

namespace zox_test {
namespace {

constexpr int kBatches = 150;

// Asked of the checker by name, so that nothing but its wrapper can be meant.
template <class Function>
Function* checked(const std::string& name) {
  static void* const checker = dlopen("libzox_volume_check.so", RTLD_LAZY | RTLD_NOLOAD);
  return checker ? reinterpret_cast<Function*>(dlsym(checker, name.c_str())) : nullptr;
}

class Silence : public testing::TestWithParam<int> {};

TEST_P(Silence, OverValidBatches) {
  const Caster& caster = kCasters[GetParam()];
  const auto cast =
      checked<int(const zox_Volume*, const zox_Rays*)>(std::string("zox_Volume_RayCast_") + caster.name);
  const auto maximum = checked<int(const zox_Rays*, void*)>(
      caster.element_size() == 2 ? "zox_Volume_FindMax_16S" : "zox_Volume_FindMax_8U");
  ASSERT_TRUE(cast && maximum);
  const Seeds chosen = seeds(7000000, kBatches);
  for (uint64_t seed = chosen.first; seed < chosen.first + chosen.count; ++seed) {
    RandomBatch batch(caster, seed, Validity::kStrict);
    const RandomBatch::Outcome expected = batch.run(caster.reference);
    RandomBatch::Outcome actual;
    std::vector<int16_t> maxima(std::max(1, batch.rays().nrays));
    const std::string text = checker_test::said([&] {
      actual = batch.run(cast);
      maximum(&batch.rays(), maxima.data());
    });
    ASSERT_EQ(text, "") << batch.describe();
    ASSERT_EQ(expected.status, actual.status) << batch.describe();
    ASSERT_TRUE(expected.planes == actual.planes) << batch.describe();
  }
}

INSTANTIATE_TEST_SUITE_P(Casters, Silence, testing::Range(0, kCasterCount),
                         [](const auto& info) { return std::string(kCasters[info.param].name); });

}  // namespace
}  // namespace zox_test
