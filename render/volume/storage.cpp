#include "volume/storage.h"

#include <algorithm>
#include <cmath>

namespace render {
namespace {

// The smallest power of two, at least `least`, of which at most `steps` cover low .. high.
double covering_step(double low, double high, double least, int steps) {
  if (high == low) return least > 0 ? least : 1;
  // Halves, so that the difference of two large doubles stays finite.
  const double needed = (high / 2 - low / 2) / steps;
  double step = std::ldexp(1.0, std::max(std::ilogb(needed), -1000));
  while (high / 2 - std::floor(low / step) * step / 2 > step * steps / 2) step *= 2;
  return std::max(step, least);
}

}  // namespace

int Storage::sample(double voxel) const {
  // Truncation of a number that is not negative: halves are rounded up.
  const double shifted = ((negated ? -voxel : voxel) - base) * (1 / step) + (first + 32768.5);
  return std::clamp(static_cast<int>(std::clamp(shifted, 0.0, 65536.0)) - 32768, kLowestSample,
                    kHighestSample);
}

Storage choose_storage(const Array& array, double lowest, double highest, bool fine, int steps) {
  Storage s;
  s.negated = array.slope < 0;
  const double low = s.negated ? -highest : lowest, high = s.negated ? -lowest : highest;
  const double least = is_float(array.type) ? 0 : fine && is_byte(array.type) ? 1.0 / 128 : 1;
  const bool fits_by_one = least == 1 && high - low == 65535;
  s.step = fits_by_one ? 1 : covering_step(low, high, least, steps);
  const bool as_it_stands = low >= kLowestSample * s.step && high <= kHighestSample * s.step &&
                            std::floor(low / s.step) * s.step == low;
  if (!as_it_stands) {
    s.base = low == high ? low : std::floor(low / s.step) * s.step;
    s.first = low == high ? 0 : fits_by_one ? kLowestSample - 1 : kLowestSample;
  }
  s.lowest = s.sample(lowest);
  s.highest = s.sample(highest);
  if (s.negated) std::swap(s.lowest, s.highest);
  const double scale = std::abs(array.slope);
  s.slope = scale * s.step;
  s.intercept = array.intercept + scale * (s.base - s.first * s.step);
  require(std::isfinite(s.intercept) && std::isnormal(s.slope) && std::isfinite(s.value(s.highest)),
          "The values, slope and intercept of the array leave the range of doubles.");
  return s;
}

}  // namespace render
