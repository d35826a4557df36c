#include "volume/regions.h"

#include <cmath>

namespace render {
namespace {

constexpr double kTolerance = 1e-3;  // of the spacing

bool is_even(const std::vector<double>& positions, size_t first, size_t last) {
  const double spacing = (positions[last] - positions[first]) / static_cast<double>(last - first);
  for (size_t k = first + 1; k < last; ++k) {
    const double place = positions[first] + static_cast<double>(k - first) * spacing;
    if (std::abs(positions[k] - place) > kTolerance * spacing) return false;
  }
  return true;
}

}  // namespace

std::vector<Region> even_regions(const std::vector<double>& positions) {
  if (positions.size() == 1) return {{0, 0, positions[0], positions[0]}};
  std::vector<Region> regions;
  for (size_t first = 0; first + 1 < positions.size();) {
    size_t last = first + 1;
    while (last + 1 < positions.size() && is_even(positions, first, last + 1)) ++last;
    regions.push_back({static_cast<int>(first), static_cast<int>(last), positions[first], positions[last]});
    first = last;
  }
  return regions;
}

}  // namespace render
