// The header does the same in both languages, and what a caller would work out by hand.
#include "layout_chain.h"

#include <gtest/gtest.h>

namespace {

void expect_chain(const LayoutChain& chain) {
  EXPECT_EQ(128, chain.size);
  EXPECT_EQ(4 * 131072u, chain.elements);
  // x = 69 is brick 1, cell 1, column 1; y = 2 is row 2; z = 4 is layer 0 of cell 2.
  EXPECT_EQ(131072u + (1 << 5) + 1 + (2 << 2) + (2 << 13), chain.last);
  EXPECT_EQ(0, chain.changed);
  EXPECT_EQ(2, chain.regions);
  // z from -3: 0 is the fourth sample; spacings of 2 and 6 leave the grid, so that the ends drop out.
  EXPECT_EQ(4, chain.first);
  EXPECT_EQ(15, chain.count);
  EXPECT_EQ(0, chain.status);
  // Slice 0 holds 0, slice 1 holds 100, at z = 0 and 2; slices 2 and 3 at 4 and 10.
  EXPECT_EQ(50, chain.samples[0]);
  EXPECT_EQ(100, chain.samples[1]);
  EXPECT_NEAR(216, chain.samples[4], 1);
  EXPECT_NEAR(383, chain.samples[14], 1);
}

TEST(Layout, TheChainInC11) { expect_chain(layout_chain_in_c11()); }
TEST(Layout, TheChainInCpp17) { expect_chain(layout_chain_in_cpp17()); }

}  // namespace
