// How much the random tests do, and where they start: the environment may say.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace zox_test {

// ZOX_TEST_SCALE multiplies every test's own count: 0.1 under valgrind, 10 in a soak.
inline double effort_scale() {
  const char* scale = std::getenv("ZOX_TEST_SCALE");
  return scale == nullptr ? 1.0 : std::atof(scale);
}

struct Seeds {
  uint64_t first;
  uint64_t count;
};

// ZOX_TEST_SEED and ZOX_TEST_COUNT name one seed or a few, to see a failure again.
inline Seeds seeds(uint64_t first, int count) {
  const char* wanted_first = std::getenv("ZOX_TEST_SEED");
  const char* wanted_count = std::getenv("ZOX_TEST_COUNT");
  Seeds chosen{first, static_cast<uint64_t>(std::max(1.0, std::ceil(count * effort_scale())))};
  if (wanted_first != nullptr) chosen = {std::strtoull(wanted_first, nullptr, 10), 1};
  if (wanted_count != nullptr) chosen.count = std::strtoull(wanted_count, nullptr, 10);
  return chosen;
}

}  // namespace zox_test
