#include "cast/block_bounds.h"

#include <algorithm>

namespace render {
namespace {

// Chords are rounded; positions are not.
constexpr double kSpareUnits = 4;

}  // namespace

void Bundle::reset(double first, double last) {
  first_ = first;
  last_ = std::max(last, first + 1);
  low_at_first_.fill(1e300);
  low_at_last_.fill(1e300);
  high_at_first_.fill(-1e300);
  high_at_last_.fill(-1e300);
}

void Bundle::add(const Line& line) {
  for (size_t a = 0; a < 3; ++a) {
    const double at_first = line.middle[a] + first_ * line.step[a],
                 at_last = line.middle[a] + last_ * line.step[a];
    low_at_first_[a] = std::min(low_at_first_[a], at_first);
    low_at_last_[a] = std::min(low_at_last_[a], at_last);
    high_at_first_[a] = std::max(high_at_first_[a], at_first);
    high_at_last_[a] = std::max(high_at_last_[a], at_last);
  }
}

void Bundle::add(const Bundle& other) {
  for (size_t a = 0; a < 3; ++a) {
    low_at_first_[a] = std::min(low_at_first_[a], other.low_at_first_[a]);
    low_at_last_[a] = std::min(low_at_last_[a], other.low_at_last_[a]);
    high_at_first_[a] = std::max(high_at_first_[a], other.high_at_first_[a]);
    high_at_last_[a] = std::max(high_at_last_[a], other.high_at_last_[a]);
  }
}

void Bundle::cells(double first, double last, const Volume& volume, bool nearest, Size3& low,
                   Size3& high) const {
  const double begin = (first - first_) / (last_ - first_), end = (last - first_) / (last_ - first_);
  for (size_t a = 0; a < 3; ++a) {
    const double low_slope = low_at_last_[a] - low_at_first_[a],
                 high_slope = high_at_last_[a] - high_at_first_[a];
    const double lowest = low_at_first_[a] + std::min(begin * low_slope, end * low_slope) - kSpareUnits;
    const double highest = high_at_first_[a] + std::max(begin * high_slope, end * high_slope) + kSpareUnits;
    const double shift = (nearest ? 0.5 : 0) - volume.first[a], most = volume.size[a] - 1;
    low[a] = static_cast<int>(std::clamp(lowest * (1 / kGrid) + shift, 0.0, most));
    high[a] = static_cast<int>(std::clamp(highest * (1 / kGrid) + shift, 0.0, most));
  }
}

}  // namespace render
