#include "volume/regions.h"

#include <gtest/gtest.h>

namespace zox_test {
namespace {

std::vector<int> firsts(const std::vector<double>& positions) {
  std::vector<int> found;
  for (const render::Region& region : render::even_regions(positions)) found.push_back(region.first);
  return found;
}

TEST(EvenRegions, OneWhereAllGapsAreAlike) {
  EXPECT_EQ(firsts({0}), (std::vector<int>{0}));
  EXPECT_EQ(firsts({-3, 4}), (std::vector<int>{0}));
  EXPECT_EQ(firsts({0, 1.5, 3, 4.5, 6}), (std::vector<int>{0}));
  EXPECT_EQ(firsts({0, 0.3333, 0.6667, 1, 1.3333, 1.6667}), (std::vector<int>{0}))
      << "written digits are no gaps";
  EXPECT_EQ(firsts({0, 1, 2.004, 3, 4}), (std::vector<int>{0, 1, 2, 3}));
}

TEST(EvenRegions, CutWhereTheGapChanges) {
  EXPECT_EQ(firsts({0, 1, 2, 3, 5, 7, 9}), (std::vector<int>{0, 3}));
}

TEST(EvenRegions, AnOddGapIsARegionOfItsOwn) {
  const auto regions = render::even_regions({0, 1, 2, 3, 5.5, 6.5, 7.5});
  ASSERT_EQ(regions.size(), 3u);
  EXPECT_EQ(regions[1].first, 3);
  EXPECT_EQ(regions[1].last, 4);
  EXPECT_EQ(regions[1].low, 3);
  EXPECT_EQ(regions[1].high, 5.5);
  EXPECT_EQ(regions[1].slices_per_unit(), 0.4);
}

}  // namespace
}  // namespace zox_test
