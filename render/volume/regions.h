// Slice positions as runs of even spacing.
#pragma once

#include <vector>

namespace render {

// Slices first .. last lie evenly from low to high.
struct Region {
  int first = 0, last = 0;
  double low = 0, high = 0;
  double slices_per_unit() const { return high > low ? (last - first) / (high - low) : 1; }
};

// Cuts ascending positions into as few runs as reach from the first on, a gap of its own width being a run
// by itself. Neighbouring runs share a slice. A slice may lie a thousandth of the spacing from its
// even place, which is what written digits leave.
std::vector<Region> even_regions(const std::vector<double>& positions);

}  // namespace render
