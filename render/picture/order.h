// Which of two samples wins.
#pragma once

#include <climits>
#include <cmath>
#include <cstdint>

#include "interface.h"

namespace render {

// Larger samples are larger values. Of equal magnitudes the positive value wins, which the larger sample is.
struct Order {
  int reduction;
  double slope, intercept;

  // Loses against every sample.
  static constexpr int kNone = INT_MIN;
  double magnitude(int sample) const { return std::abs(sample * slope + intercept); }

  bool better(int a, int b) const {
    if (a == kNone || b == kNone) return b == kNone && a != kNone;
    if (reduction == ZOX_RENDER_MAXIMUM) return a > b;
    if (reduction == ZOX_RENDER_MINIMUM) return a < b;
    const double of_a = magnitude(a), of_b = magnitude(b);
    return of_a > of_b || (of_a == of_b && a > b);
  }
};

}  // namespace render
