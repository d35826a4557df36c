// Which of two samples wins.
#pragma once

#include <cmath>
#include <cstdint>

#include "interface.h"

namespace render {

// Larger samples are larger values. Of equal magnitudes the positive value wins, which the larger sample is.
class Order {
 public:
  Order(int reduction, double slope, double intercept)
      : sign_(reduction == ZOX_RENDER_MINIMUM             ? -1
              : reduction == ZOX_RENDER_LARGEST_MAGNITUDE ? 0
                                                          : 1),
        slope_(slope),
        intercept_(intercept) {}

  // Loses against every sample, by its number already where the numbers decide.
  int none() const { return sign_ < 0 ? kBeyond : -kBeyond; }
  // Wins against every sample.
  int unbeatable() const { return -none(); }
  // By their numbers: 1, -1 where smaller ones win, and 0 where the magnitudes of values decide.
  int sign() const { return sign_; }
  double magnitude(int sample) const { return std::abs(sample * slope_ + intercept_); }

  bool better(int a, int b) const {
    if (sign_ != 0) return a * sign_ > b * sign_;
    if (a == none() || b == unbeatable()) return false;
    if (b == none() || a == unbeatable()) return true;
    const double of_a = magnitude(a), of_b = magnitude(b);
    return of_a > of_b || (of_a == of_b && a > b);
  }

 private:
  static constexpr int kBeyond = 40000;
  int sign_;
  double slope_, intercept_;
};

}  // namespace render
