// What the tests of refused records share.
#pragma once

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "array_scene.h"

namespace zox_test {

inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInfinity = std::numeric_limits<double>::infinity();

// One sentence: not empty, begins like one, of printable characters on one line.
inline void expect_sentence(const std::string& what) {
  const std::string text = zox_render_last_error();
  EXPECT_GT(text.size(), 10u) << what;
  EXPECT_EQ(text.find('\n'), std::string::npos) << what;
}

inline std::unique_ptr<Scene> good_scene() {
  return make_scene(ZOX_RENDER_INT16, {4, 5, 6}, std::vector<double>(120, 3));
}

}  // namespace zox_test
