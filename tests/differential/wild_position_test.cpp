// Rays that go anywhere at all, through volumes whose every address can be read: whatever the positions,
// samples are those of the reference, nothing else is written, and samples in slices that the stack
// lacks are left alone.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "cases.h"
#include "crash_note.h"
#include "guarded_buffer.h"
#include "operation_list.h"
#include "sample_planes.h"

namespace zox_test {
namespace {

// Bytes at random, for every offset of 32 bits and every 16-bit element number of 32.
const RepeatedPages& memory() {
  static const auto* const all = [] {
    auto* pages = new RepeatedPages((size_t{1} << 33) + RepeatedPages::kPeriod);
    Random random(1);
    for (size_t i = 0; i < RepeatedPages::period<uint64_t>(); ++i) pages->as<uint64_t>()[i] = random.bits();
    return pages;
  }();
  return *all;
}

double draw_coordinate(Random& random) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  return random.pick({random.real(0, 60), random.real(0, 60), random.real(-2100, 2100),
                      random.real(-1e10, 1e10), random.pick({-1024.0, 1024.0, -2048.0, 2048.0, 2147483647.0}),
                      random.pick({kNaN, kInfinity, -kInfinity, 1e300, -1e300})});
}

// A stack whose rows and slices can be read for all indices that fixed point yields, negative ones
// too, and 65535 columns and rows.
struct WildStack {
  static constexpr int kReach = 2049;      // indices below 0 and above
  static constexpr int kRows = 65536;      // of 16-bit indices
  static constexpr int kOrigin = 1 << 22;  // of a slice in memory()

  explicit WildStack(Random& random) {
    const bool even = random.chance(0.5);
    const int pitch = 2 * random.whole(0, 50), distance = 2 * random.whole(0, 3000);
    for (int y = -kReach; y <= kRows; ++y)
      rows.push_back(even ? y * pitch % (1 << 21) : 2 * random.whole(0, 9999));
    for (int s = -kReach; s <= kReach; ++s) {
      const int offset = even ? (s + kReach) * distance : 2 * random.whole(0, 9999);
      slices.push_back(memory().as<uint8_t>() + kOrigin + offset);
    }
    const int regions = random.pick({1, 1, 2, 3});
    double bound = random.real(-20, 20);
    bounds.push_back(bound);
    for (int j = 0; j < regions; ++j) {
      bounds.push_back(bound += random.pick({0.0, random.real(0, 30), random.real(0, 2000)}));
      scales.push_back(random.pick({1.0, random.real(0, 2), -1.0, 0.0, 5000.0, 1e300}));
      first_slices.push_back(random.pick({0, random.whole(-3, 20), INT32_MAX, INT32_MIN}));
    }
  }

  zox_Volume record(int nslices) const {
    zox_Volume volume{};
    volume.slices = slices.data() + kReach;
    volume.rowoffs = rows.data() + kReach;
    volume.nslices = nslices;
    volume.nregions = static_cast<int32_t>(scales.size());
    volume.regslice = first_slices.data();
    volume.regbounds = bounds.data();
    volume.regscale = scales.data();
    return volume;
  }

  std::vector<int32_t> rows;
  std::vector<const void*> slices;
  std::vector<double> bounds, scales;
  std::vector<int32_t> first_slices;
};

// Rays in any direction, among them some that stay together.
struct WildRays {
  WildRays(const Caster& caster, Random& random) {
    const int count = random.pick({1, 2, 9, 64, random.whole(1, 64), caster.blocked() ? 70 : 3});
    const bool together = random.chance(0.4);
    const int longest = random.pick({1, 3, 20, random.whole(1, 90), random.chance(0.05) ? 600 : 7});
    for (int r = 0; r < count; ++r) {
      std::array<double, 3> start, step;
      for (size_t a = 0; a < 3; ++a) {
        start[a] = together && r > 0 ? starts[0][a] + random.real(-1, 1) : draw_coordinate(random);
        step[a] = together && r > 0    ? steps[0][a]
                  : random.chance(0.7) ? random.real(-3, 3)
                                       : draw_coordinate(random);
      }
      starts.push_back(start);
      steps.push_back(step);
      counts.push_back(random.chance(0.5) ? longest : random.whole(0, longest));
    }
    for (int r = 0; r < count; ++r) {
      start_pointers.push_back(starts[static_cast<size_t>(r)].data());
      step_pointers.push_back(steps[static_cast<size_t>(r)].data());
    }
    planes = Planes(longest, count, caster.element_size(), random);
    record = {planes.pointers(), count, start_pointers.data(), step_pointers.data(), counts.data()};
  }

  std::vector<std::array<double, 3>> starts, steps;
  std::vector<const double*> start_pointers, step_pointers;
  std::vector<int32_t> counts;
  Planes planes;
  zox_Rays record{};
};

class WildPositions : public CasterTest {};

TEST_P(WildPositions, MatchReference) {
  const Seeds chosen = seeds_of(target(), 400);
  for (uint64_t seed = chosen.first; seed < chosen.first + chosen.count; ++seed) {
    Random random(seed * kCasterCount + static_cast<uint64_t>(&caster() - kCasters));
    const WildStack stack(random);
    zox_Volume volume = stack.record(random.whole(0, 30));
    if (caster().blocked()) volume.data = memory().as<void>();
    if (caster().blocked()) volume.size = random.pick({64, 128, 512, 2048});
    WildRays rays(caster(), random);
    const std::string what = std::string(caster().name) + " seed " + std::to_string(seed);
    rays.planes.fill(0x5A);
    set_crash_note("reference, " + what);
    ASSERT_EQ(ZOX_STS_NO_ERROR, caster().reference(&volume, &rays.record));
    const std::vector<uint8_t> expected = rays.planes.contents();
    rays.planes.fill(0x5A);
    set_crash_note(std::string(target().name) + ", " + what);
    ASSERT_EQ(ZOX_STS_NO_ERROR, (cast())(&volume, &rays.record));
    const std::vector<uint8_t> actual = rays.planes.contents();
    ASSERT_TRUE(expected == actual) << target().name << ", " << what << ": "
                                    << rays.planes.first_difference(expected, actual);
  }
}

INSTANTIATE_CASTERS(WildPositions, all_targets(), every_caster);

}  // namespace
}  // namespace zox_test
