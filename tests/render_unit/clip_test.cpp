#include "view/clip.h"

#include <gtest/gtest.h>

#include "random.h"

namespace zox_test {
namespace {

using render::kGrid;

bool within(const render::SampleBox& box, const render::Line& line, double n) {
  for (size_t a = 0; a < 3; ++a) {
    const double position = line.middle[a] + n * line.step[a];
    if (position < box.low[a] || position > box.high[a]) return false;
  }
  return true;
}

// The same box and lines, in lanes: lines that stand still along an axis among them.
void check_lanes(const render::SampleBox& box, const render::LineLanes& lines) {
  const render::Stretch within{-100, 100};
  render::StretchLanes found;
  render::clip(box, lines, within, found);
  for (size_t lane = 0; lane < render::kLanes; ++lane) {
    const render::Stretch one = render::clip(box, lines.of(lane), within);
    ASSERT_EQ(found.empty(lane), one.empty()) << "lane " << lane;
    if (one.empty()) continue;
    ASSERT_EQ(found.first[lane], one.first) << "lane " << lane;
    ASSERT_EQ(found.last[lane], one.last) << "lane " << lane;
  }
}

// Ends of boxes and positions on few values, so that rays meet the ends exactly, too.
TEST(Clip, FindsTheFirstAndLastSample) {
  Random random(5);
  render::LineLanes lanes{};
  for (int round = 0; round < 20000; ++round) {
    render::SampleBox box;
    render::Line line;
    const double unit = random.pick({1.0, kGrid / 2, kGrid / 16 - 1});
    for (size_t a = 0; a < 3; ++a) {
      box.low[a] = random.whole(-3, 3) * unit;
      box.high[a] = box.low[a] + random.whole(0, 40) * unit;
      line.middle[a] = random.whole(-60, 60) * unit + random.whole(-1, 1);
      line.step[a] = random.whole(-3, 3) * unit;
    }
    if (line.step == std::array<double, 3>{}) continue;
    lanes.set(static_cast<size_t>(round) % render::kLanes, line);
    if (round % 64 == 63) check_lanes(box, lanes);
    const render::Stretch found = render::clip(box, line, {-100, 100});
    for (double n = -100; n <= 100; ++n)
      ASSERT_EQ(within(box, line, n), n >= found.first && n <= found.last)
          << "round " << round << ", sample " << n;
  }
}

}  // namespace
}  // namespace zox_test
