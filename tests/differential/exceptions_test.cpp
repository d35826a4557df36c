// Floating-point exceptions: no operation raises any that the plain reference does not, whatever the
// stack holds. Some programs unmask them and would die. Inexact is left out: nearly all arithmetic
// raises it, and nobody unmasks it.
#include <alloca.h>
#include <fenv.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "cases.h"
#include "crash_note.h"
#include "random_batch.h"

namespace zox_test {
namespace {

constexpr int kExceptions = FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW | FE_UNDERFLOW;

// A signalling NaN, the largest doubles, one that no integer holds, the smallest.
constexpr uint64_t kPoisons[] = {0x7FF0000000000001, 0x7FEFFFFFFFFFFFFF, 0xFFEFFFFFFFFFFFFF,
                                 0x41F0000000000000, 0x0000000000000001};

// Fills the stack below with what a call might find there.
[[gnu::noinline]] void poison_stack(uint64_t pattern) {
  constexpr size_t kWords = ZOX_STACK_GENERAL_TRILINEAR / 8 + 8192;
  volatile uint64_t* words = static_cast<volatile uint64_t*>(alloca(kWords * 8));
  for (size_t i = 0; i < kWords; ++i) words[i] = pattern;
}

// Parallel operations compare starts, also those of rays without samples. Where nothing comes of it a
// compiler may leave the comparison out, in the reference or in the library.
int raised_by_comparing(const Caster& caster, const zox_Rays& rays) {
  bool finite = true;
  for (int r = 0; r < rays.nrays; ++r) {
    for (int axis = 0; axis < 3; ++axis) finite = finite && std::isfinite(rays.starts[r][axis]);
  }
  return caster.parallel() && !finite ? FE_INVALID : 0;
}

int raised_by(RandomBatch& batch, zox::RayCast cast) {
  feclearexcept(FE_ALL_EXCEPT);
  batch.run(cast);
  return fetestexcept(kExceptions);
}

class Exceptions : public CasterTest {};

TEST_P(Exceptions, AreThoseOfTheReference) {
  const Seeds chosen = seeds_of(target(), 300);
  for (uint64_t seed = chosen.first; seed < chosen.first + chosen.count; ++seed) {
    RandomBatch batch(caster(), seed);
    const std::string what = std::string(target().name) + ", " + batch.describe();
    const int allowed = raised_by(batch, caster().reference) | raised_by_comparing(caster(), batch.rays());
    const uint64_t poison = kPoisons[seed % (sizeof kPoisons / sizeof *kPoisons)];
    poison_stack(poison);
    const int raised = raised_by(batch, cast());
    ASSERT_EQ(0, raised & ~allowed) << what;
    set_crash_note("exceptions unmasked, " + what);
    poison_stack(poison);
    feclearexcept(FE_ALL_EXCEPT);
    feenableexcept(kExceptions & ~allowed);
    batch.run(cast());
    fedisableexcept(FE_ALL_EXCEPT);
  }
}

// Maxima and window/level work on integers and on numbers that fit: they raise none.
TEST(ExceptionsOfOthers, AreNone) {
  std::vector<int16_t> words(200);
  for (size_t i = 0; i < words.size(); ++i) words[i] = static_cast<int16_t>(i * 331);
  std::vector<uint8_t> bytes(words.size()), selected(words.size(), 255);
  void* planes[] = {words.data()};
  const std::vector<int32_t> counts(words.size(), 1);
  const zox_Rays rays{planes, static_cast<int32_t>(words.size()), nullptr, nullptr, counts.data()};
  const uint8_t* mask = selected.data();
  const int threshold = 1;
  for (const zox::Operations* set : zox::kAllOperations) {
    if (!set->supported()) continue;
    for (const uint64_t poison : kPoisons) {
      poison_stack(poison);
      feclearexcept(FE_ALL_EXCEPT);
      for (int width : {2, 400, 32767}) {
        set->window_level_16s_8u(words.data(), bytes.data(), 199, 40, width, 0, 255);
      }
      std::vector<int16_t> maxima(words.size());
#define ZOX_TEST_MAXIMUM(Name, name, Element, Mask) \
  set->name(&rays, ZOX_MASK_ARGUMENTS_##Mask reinterpret_cast<Element*>(maxima.data()));
      ZOX_MAXIMA(ZOX_TEST_MAXIMUM)
      EXPECT_EQ(0, fetestexcept(kExceptions)) << set->name;
    }
  }
}

INSTANTIATE_CASTERS(Exceptions, all_targets(), every_caster);

}  // namespace
}  // namespace zox_test
