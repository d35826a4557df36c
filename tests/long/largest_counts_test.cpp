// Counts up to the largest that 32 bits hold, in every operation that states no limit. The arrays are
// the same few pages over and over, so what lies in them is known by the place in these.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <vector>

#include "guarded_buffer.h"
#include "operations/table.h"

namespace zox_test {
namespace {

constexpr size_t kLargest = INT_MAX;

class LargestCounts : public testing::TestWithParam<const zox::Operations*> {
 protected:
  void SetUp() override {
    if (!GetParam()->supported()) GTEST_SKIP() << "this processor lacks " << GetParam()->name;
    // Plane pointers, all alike, to planes of 64 bytes.
    for (size_t k = 0; k < RepeatedPages::period<void*>(); ++k) table().as<void*>()[k] = plane_;
  }
  static const RepeatedPages& table() {
    static const auto* const pages = new RepeatedPages(kLargest * sizeof(void*));
    return *pages;
  }
  const zox::Operations& operations() const { return *GetParam(); }

  // `rays` rays of the given counts from the first voxel, standing but for the last one's step.
  zox_Rays rays_of(std::vector<int32_t> counts, double dx) {
    counts_ = std::move(counts);
    step_[0] = dx;
    starts_.assign(counts_.size(), start_);
    steps_.assign(counts_.size(), step_);
    return {table().as<void*>(), static_cast<int32_t>(counts_.size()), starts_.data(), steps_.data(),
            counts_.data()};
  }

  uint8_t plane_[64] = {};
  const double start_[3] = {0, 0, 0};
  double step_[3] = {0, 0, 0};
  std::vector<int32_t> counts_;
  std::vector<const double*> starts_, steps_;
};

// The ray goes through voxels 0 to 4 of a row; the last of its samples is what its plane keeps.
constexpr double kToVoxel4 = 4.0 / INT_MAX;

TEST_P(LargestCounts, OfSamplesInABlockedVolume) {
  std::vector<uint8_t> voxels(131072);
  voxels[32] = 77;  // (4, 0, 0)
  zox_Volume volume{};
  volume.data = voxels.data();
  volume.size = 64;
  const zox_Rays rays = rays_of({INT_MAX, 3}, kToVoxel4);
  EXPECT_EQ(operations().blocked_parallel_nearest_8u(&volume, &rays), ZOX_STS_NO_ERROR);
  EXPECT_EQ(plane_[0], 77);
}

TEST_P(LargestCounts, OfSamplesOnTheOneRegionPath) {
  const uint8_t row[8] = {0, 1, 2, 3, 77};
  const void* slices[] = {row};
  const int32_t rowoffs[] = {0}, first_slice[] = {0};
  const double bounds[] = {0, 1}, scale[] = {1};
  zox_Volume volume{};
  volume.slices = slices;
  volume.rowoffs = rowoffs;
  volume.nslices = 1;
  volume.nregions = 1;
  volume.regslice = first_slice;
  volume.regbounds = bounds;
  volume.regscale = scale;
  const zox_Rays rays = rays_of({INT_MAX, 5}, kToVoxel4);
  EXPECT_EQ(operations().general_parallel_nearest_8u(&volume, &rays), ZOX_STS_NO_ERROR);
  EXPECT_EQ(plane_[0], 77);
}

// One ray in every 2^19 has a sample, the last of all among them.
TEST_P(LargestCounts, OfRays) {
  const RepeatedPages starts(kLargest * sizeof(void*)), counts(kLargest * sizeof(int32_t)), plane(kLargest);
  for (size_t r = 0; r < RepeatedPages::period<void*>(); ++r) starts.as<const double*>()[r] = start_;
  const size_t last = kLargest - 1;
  counts.as<int32_t>()[last % RepeatedPages::period<int32_t>()] = 1;
  const std::vector<uint8_t> voxels(131072, 77);
  zox_Volume volume{};
  volume.data = voxels.data();
  volume.size = 64;
  void* planes[] = {plane.as<void>()};
  const zox_Rays rays = {planes, INT_MAX, starts.as<const double*>(), starts.as<const double*>(),
                         counts.as<int32_t>()};
  EXPECT_EQ(operations().blocked_divergent_nearest_8u(&volume, &rays), ZOX_STS_NO_ERROR);
  EXPECT_EQ(plane.as<uint8_t>()[last], 77);
  EXPECT_EQ(plane.as<uint8_t>()[last - 1], 0);
}

TEST_P(LargestCounts, OfSamplesInAMaximum) {
  for (int32_t count : {INT_MAX, INT_MAX - 1}) {
    std::memset(plane_, 9, sizeof plane_);
    const zox_Rays rays = rays_of({5, 0, count, 5}, 0);
    uint8_t maxima[4] = {};
    EXPECT_EQ(operations().find_max_8u(&rays, maxima), ZOX_STS_NO_ERROR);
    EXPECT_EQ(std::vector<uint8_t>(maxima, maxima + 4), (std::vector<uint8_t>{9, 0, 9, 9}));
  }
}

TEST_P(LargestCounts, OfRaysInAMaximum) {
  const RepeatedPages counts(kLargest * sizeof(int32_t)), plane(kLargest), maxima(kLargest);
  for (size_t r = 0; r < RepeatedPages::period<int32_t>(); ++r) counts.as<int32_t>()[r] = 1;
  std::memset(plane.as<void>(), 9, RepeatedPages::kPeriod);
  void* planes[] = {plane.as<void>()};
  const zox_Rays rays = {planes, INT_MAX, nullptr, nullptr, counts.as<int32_t>()};
  EXPECT_EQ(operations().find_max_8u(&rays, maxima.as<uint8_t>()), ZOX_STS_NO_ERROR);
  EXPECT_EQ(maxima.as<uint8_t>()[kLargest - 1], 9);
  EXPECT_EQ(maxima.as<uint8_t>()[0], 9);
}

TEST_P(LargestCounts, OfValuesInAWindow) {
  const RepeatedPages values(kLargest * sizeof(int16_t)), bytes(kLargest);
  for (size_t i = 0; i < RepeatedPages::period<int16_t>(); ++i) values.as<int16_t>()[i] = 100;
  EXPECT_EQ(
      operations().window_level_16s_8u(values.as<int16_t>(), bytes.as<uint8_t>(), INT_MAX, 100, 50, 0, 255),
      ZOX_STS_NO_ERROR);
  EXPECT_EQ(bytes.as<uint8_t>()[kLargest - 1], 127);
  EXPECT_EQ(bytes.as<uint8_t>()[0], 127);
}

INSTANTIATE_TEST_SUITE_P(All, LargestCounts, testing::ValuesIn(zox::kAllOperations),
                         [](const auto& info) { return info.param->name; });

}  // namespace
}  // namespace zox_test
