#include "volume/storage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace zox_test {
namespace {

render::Storage storage(int type, double low, double high, double slope = 1, bool fine = true,
                        int steps = 65534) {
  render::Array array;
  array.type = type;
  array.slope = slope;
  return render::choose_storage(array, low, high, fine, steps);
}

TEST(Storage, KeepsWholeNumbersOfSixteenBits) {
  for (const double low : {-32767.0, -1024.0, 0.0, 30000.0})
    for (const double high : {low, low + 1, low + 4095, low + 60000}) {
      const render::Storage s = storage(ZOX_RENDER_INT32, low, high);
      for (const double v : {low, high, (low + high) / 2 - 0.25})
        EXPECT_EQ(s.value(s.sample(v)), std::floor(v + 0.5)) << low << ' ' << high;
    }
}

TEST(Storage, LeavesSamplesAsTheyStandWhereTheyFit) {
  EXPECT_EQ(storage(ZOX_RENDER_INT16, -1024, 3071).sample(-1000), -1000);
  EXPECT_EQ(storage(ZOX_RENDER_UINT8, 0, 255).sample(3), 3 * 128);
  EXPECT_EQ(storage(ZOX_RENDER_UINT8, 0, 255, 1, false).sample(3), 3);
  EXPECT_EQ(storage(ZOX_RENDER_INT8, -128, 127).sample(-128), -128 * 128);
}

TEST(Storage, NeverGivesTheSampleOfNothing) {
  const render::Storage s = storage(ZOX_RENDER_UINT16, 0, 65535);
  EXPECT_EQ(s.sample(0), render::kLowestSample) << "the one value that does not fit is raised by one";
  EXPECT_EQ(s.value(s.sample(1)), 1);
  EXPECT_EQ(s.value(s.sample(65535)), 65535);
  EXPECT_EQ(
      storage(ZOX_RENDER_INT16, -32768, 100).value(storage(ZOX_RENDER_INT16, -32768, 100).sample(-32768)),
      -32768);
}

TEST(Storage, CutsRealNumbersIntoPowersOfTwo) {
  const render::Storage s = storage(ZOX_RENDER_FLOAT32, -1, 2.5);
  EXPECT_EQ(s.slope, 1.0 / 16384);
  for (const double v : {-1.0, 0.25, 1.0, 2.5}) EXPECT_EQ(s.value(s.sample(v)), v);
  EXPECT_NEAR(s.value(s.sample(0.3)), 0.3, s.slope / 2);
  const render::Storage constant = storage(ZOX_RENDER_FLOAT64, 0.3, 0.3);
  EXPECT_EQ(constant.value(constant.sample(0.3)), 0.3);
  constexpr double kLargest = std::numeric_limits<double>::max();
  const render::Storage far = storage(ZOX_RENDER_FLOAT64, -kLargest / 4, kLargest / 4);
  EXPECT_NEAR(far.value(far.sample(kLargest / 8)) / kLargest, 0.125, 1e-4);
}

TEST(Storage, TurnsNegativeSlopesRound) {
  const render::Storage s = storage(ZOX_RENDER_INT16, -10, 500, -2);
  EXPECT_GT(s.slope, 0);
  EXPECT_EQ(s.value(s.sample(500)), -1000);
  EXPECT_EQ(s.lowest, s.sample(500));
  EXPECT_EQ(s.highest, s.sample(-10));
}

TEST(GuardedSamples, SwallowWhatIsOneTooSmallInMagnitude) {
  for (int sample = -16384; sample <= 16383; ++sample) {
    const int16_t stored = render::to_guarded(sample + 500, 500);
    EXPECT_EQ(stored, 2 * sample);
    EXPECT_EQ(render::from_guarded(stored), sample);
    const int nearer_zero = stored > 0 ? stored - 1 : stored < 0 ? stored + 1 : 0;
    EXPECT_EQ(render::from_guarded(static_cast<int16_t>(nearer_zero)), sample);
  }
}

}  // namespace
}  // namespace zox_test
