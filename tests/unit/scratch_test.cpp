// Slice stacks: scratch beyond the fixed tables. Its sizes are 32-bit products, so counts exist that
// wrap to a size that can never be had, and with them the size that was asked for becomes visible.
#include "cases.h"
#include "small_volumes.h"

namespace zox_test {
namespace {

class Scratch : public CasterTest {
 protected:
  // Sample counts that make the node store a size of 2^31, which is negative.
  int32_t too_many() const { return 1 << (caster().trilinear() ? 21 : 22); }

  // Casts with planes that nobody may touch.
  int run(const zox_Volume& volume, int32_t nrays, std::vector<int32_t> counts, double apart = 0) {
    const double start[] = {1, 1, 1};
    const double other[] = {1, 1, 1 + apart};
    const double step[] = {0, 0, 0};
    const double* starts[] = {start, other};
    const double* steps[] = {step, step};
    const zox_Rays rays = {nullptr, nrays, starts, steps, counts.data()};
    return cast()(&volume, &rays);
  }

  Stack stack() const {
    Stack stack(caster(), 3, 3, 8);
    return stack.regions({0, 4, 8}, {0, 4}, {1, 1});
  }
};

TEST_P(Scratch, ANodeStoreTooLargeIsNoMemory) {
  Stack volume = stack();
  EXPECT_EQ(run(volume.volume(), 1, {too_many()}), ZOX_STS_NO_MEMORY);
  EXPECT_EQ(run(volume.volume(), 2, {1, too_many()}), ZOX_STS_NO_MEMORY);
}

// Without rays the first count still decides, save for parallel nearest casters.
TEST_P(Scratch, TheFirstCountIsReadEvenWithoutRays) {
  Stack volume = stack();
  const bool asks = caster().trilinear() || !caster().parallel();
  for (int32_t nrays : {0, -1}) {
    EXPECT_EQ(run(volume.volume(), nrays, {too_many()}), asks ? ZOX_STS_NO_MEMORY : ZOX_STS_NO_ERROR);
    EXPECT_EQ(run(volume.volume(), nrays, {5}), ZOX_STS_NO_ERROR);
  }
}

// Counts after the last ray's do not matter.
TEST_P(Scratch, OnlyTheCountsOfRaysAreRead) {
  Stack volume = stack();
  EXPECT_EQ(run(volume.volume(), 1, {0, too_many()}), ZOX_STS_NO_ERROR);
}

INSTANTIATE_CASTERS(Scratch, library(), slice_stacks);

// The one-region path of the parallel nearest casters takes no scratch at all, and would write: it
// is out of the question here. All others want tables as large as the volume says.
class GrowingTables : public Scratch {};

TEST_P(GrowingTables, SliceHeadsTooManyAreNoMemory) {
  Stack volume = stack();
  volume.pretend(1 << 30);  // 4 bytes each: 2^32, which is 0
  EXPECT_EQ(run(volume.volume(), 1, {0}), ZOX_STS_NO_MEMORY);
}

TEST_P(GrowingTables, BoundariesTooManyAreNoMemory) {
  Stack volume = stack();
  zox_Volume many = volume.volume();
  many.nregions = (1 << 30) - 1;
  EXPECT_EQ(run(many, 1, {0}), ZOX_STS_NO_MEMORY);
}

INSTANTIATE_CASTERS(GrowingTables, library(),
                    [](const Caster& c) { return !c.blocked() && !c.fixed_tables(); });

}  // namespace
}  // namespace zox_test
