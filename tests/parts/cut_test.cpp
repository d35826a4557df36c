// Every voxel of a volume is owned by one part, and no part passes the limits.
#include <gtest/gtest.h>
#include <parts/cut.h>

#include <algorithm>
#include <random>
#include <stdexcept>

namespace zox::parts {
namespace {

void expect_a_partition(const Size& whole, const Limits& limits, const std::vector<Part>& parts) {
  std::vector<int> owners(size_t(whole[0]) * size_t(whole[1]) * size_t(whole[2]));
  for (const Part& part : parts) {
    uint64_t voxels = 1;
    for (size_t a = 0; a < 3; ++a) {
      EXPECT_EQ(part.first[a], part.owned_first[a]);
      EXPECT_EQ(part.size[a], std::min(part.owned_size[a] + 1, whole[a] - part.first[a]));
      EXPECT_LE(part.size[a], limits.longest);
      voxels *= uint64_t(part.size[a]);
    }
    if (limits.most_voxels) EXPECT_LE(voxels, limits.most_voxels);
    for (int z = 0; z < part.owned_size[2]; ++z)
      for (int y = 0; y < part.owned_size[1]; ++y)
        for (int x = 0; x < part.owned_size[0]; ++x)
          ++owners[(size_t(part.owned_first[2] + z) * size_t(whole[1]) + size_t(part.owned_first[1] + y)) *
                       size_t(whole[0]) +
                   size_t(part.owned_first[0] + x)];
  }
  EXPECT_TRUE(std::all_of(owners.begin(), owners.end(), [](int n) { return n == 1; }));
  EXPECT_GE(parts.size(), size_t(std::min(limits.least_parts, whole[2])));
}

TEST(Cut, OwnsEveryVoxelOnce) {
  std::mt19937 random(5);
  for (int round = 0; round < 300; ++round) {
    const auto draw = [&](int low, int high) {
      return std::uniform_int_distribution<int>(low, high)(random);
    };
    const Size whole = {draw(2, 40), draw(2, 40), draw(2, 40)};
    Limits limits{draw(4, 50), 0, draw(1, 12)};
    if (draw(0, 1)) limits.most_voxels = uint64_t(41 * 41) * uint64_t(draw(2, 20));
    std::vector<double> weights;
    if (draw(0, 1))
      for (int z = 0; z < whole[2]; ++z) weights.push_back(draw(0, 3) ? draw(0, 100) : 0);
    const std::vector<Part> parts = cut(whole, limits, weights);
    expect_a_partition(whole, limits, parts);
    const int workers = draw(1, 9);
    size_t shared = 0;
    for (const std::vector<Part>& share : shares(parts, weights, workers)) shared += share.size();
    EXPECT_EQ(shared, parts.size());
  }
}

// All that matters lies in the last quarter: three of four workers meet there.
TEST(Cut, FollowsTheWeights) {
  std::vector<double> weights(80, 0.0);
  std::fill(weights.begin() + 60, weights.end(), 1.0);
  const std::vector<Part> parts = cut({10, 10, 80}, {100, 0, 4}, weights);
  ASSERT_EQ(parts.size(), 4U);
  EXPECT_GE(parts[0].owned_size[2], 60);
  EXPECT_LE(parts[0].owned_size[2], 66);
}

// Of a volume cut across rows and columns too, no worker of many gets two parts where others get one.
TEST(Cut, SharesPartsEvenlyAmongManyWorkers) {
  const std::vector<double> weights(10'000, 1.0);
  for (const int workers : {64, 100, 256, 512, 1024, 1500, 2048, 4096}) {
    const std::vector<Part> parts = cut({10'000, 10'000, 10'000}, {1024, 0, workers}, weights);
    uint64_t most = 0, all = 0;
    for (const std::vector<Part>& share : shares(parts, weights, workers)) {
      uint64_t voxels = 0;
      for (const Part& part : share)
        voxels += uint64_t(part.owned_size[0]) * uint64_t(part.owned_size[1]) * uint64_t(part.owned_size[2]);
      most = std::max(most, voxels);
      all += voxels;
    }
    EXPECT_EQ(all, 1'000'000'000'000U);
    EXPECT_GE(double(all) / workers, 0.8 * double(most))
        << workers << " workers, " << parts.size() << " parts";
  }
}

TEST(Cut, TellsWhenNothingFits) {
  EXPECT_THROW(cut({100, 100, 10}, {1024, 10'000, 1}, {}), std::runtime_error);
}

}  // namespace
}  // namespace zox::parts
