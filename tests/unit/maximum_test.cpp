// Maxima of rays: all samples, samples by bit mask, samples by byte mask and threshold.
#include <algorithm>
#include <climits>

#include "cases.h"

namespace zox_test {
namespace {

// A filled batch: rows of samples, one row a ray; every plane has an element for each ray.
template <typename Sample>
class Filled {
 public:
  explicit Filled(const std::vector<std::vector<int>>& rays) : nrays_(static_cast<int32_t>(rays.size())) {
    size_t longest = 0;
    for (const auto& ray : rays) longest = std::max(longest, ray.size());
    // Where a ray has no sample, the planes hold what must never be taken for one.
    planes_.assign(longest, std::vector<Sample>(rays.size(), std::numeric_limits<Sample>::max()));
    for (size_t r = 0; r < rays.size(); ++r) {
      nsamples_.push_back(static_cast<int32_t>(rays[r].size()));
      for (size_t k = 0; k < rays[r].size(); ++k) planes_[k][r] = static_cast<Sample>(rays[r][k]);
    }
    for (auto& plane : planes_) pointers_.push_back(plane.data());
  }

  Filled& pretend(int32_t nrays) {
    nrays_ = nrays;
    return *this;
  }
  Filled& count(int ray, int32_t nsamples) {
    nsamples_[static_cast<size_t>(ray)] = nsamples;
    return *this;
  }
  zox_Rays rays() { return {pointers_.data(), nrays_, nullptr, nullptr, nsamples_.data()}; }

 private:
  int32_t nrays_;
  std::vector<std::vector<Sample>> planes_;
  std::vector<void*> pointers_;
  std::vector<int32_t> nsamples_;
};

constexpr int kUnwritten = 99;

// Runs one of the six: the arguments between batch and output are the masks, if any.
template <typename Sample, typename Operation, typename... Masks>
std::vector<int> maxima(Operation operation, Filled<Sample>& filled, Masks... masks) {
  std::vector<Sample> maxima(8, Sample{kUnwritten});
  const zox_Rays rays = filled.rays();
  EXPECT_EQ(operation(&rays, masks..., maxima.data()), ZOX_STS_NO_ERROR);
  return {maxima.begin(), maxima.end()};
}

std::vector<int> with_rest_untouched(std::vector<int> values) {
  values.resize(8, kUnwritten);
  return values;
}

class Maximum : public OperationsTest {
 protected:
  // All six, with masks that select everything, have to agree.
  void expect8(Filled<uint8_t> filled, std::vector<int> expected) {
    expected = with_rest_untouched(expected);
    EXPECT_EQ(maxima(operations().find_max_8u, filled), expected);
    EXPECT_EQ(maxima(operations().find_max_bmask_8u, filled, kAllBits), expected);
    EXPECT_EQ(maxima(operations().find_max_cmask_8u, filled, kAllBits, 0), expected);
  }
  void expect16(Filled<int16_t> filled, std::vector<int> expected) {
    expected = with_rest_untouched(expected);
    EXPECT_EQ(maxima(operations().find_max_16s, filled), expected);
    EXPECT_EQ(maxima(operations().find_max_bmask_16s, filled, kAllBits), expected);
    EXPECT_EQ(maxima(operations().find_max_cmask_16s, filled, kAllBits, 0), expected);
  }

  static constexpr uint8_t kAllBits[16] = {255, 255, 255, 255, 255, 255, 255, 255,
                                           255, 255, 255, 255, 255, 255, 255, 255};
};

TEST_P(Maximum, ARayWithoutSamplesYieldsTheEmptyValue) {
  expect8(Filled<uint8_t>({{4, 9}, {}, {7}}), {9, 0, 7});
  expect16(Filled<int16_t>({{-4, -9}, {}, {7}}), {-4, -32768, 7});
}

TEST_P(Maximum, ANegativeCountIsAnEmptyRay) {
  expect8(Filled<uint8_t>({{4, 9}, {5}, {7}}).count(1, -2), {9, 0, 7});
  expect16(Filled<int16_t>({{4, 9}, {5}, {7}}).count(0, -1), {-32768, 5, 7});
}

TEST_P(Maximum, NegativeSamplesAreComparedWithSign) {
  expect16(Filled<int16_t>({{-5, -7}}), {-5});
  expect16(Filled<int16_t>({{-32768, -32768, -32768}}), {-32768});
  expect16(Filled<int16_t>({{-32768, 32767}}), {32767});
}

TEST_P(Maximum, BytesAreComparedWithoutSign) { expect8(Filled<uint8_t>({{127, 128}, {255, 1}}), {128, 255}); }

TEST_P(Maximum, OfAPairTheLongerRayGoesOnAlone) {
  expect8(Filled<uint8_t>({{6}, {1, 2, 3, 9, 4}}), {6, 9});
  expect8(Filled<uint8_t>({{1, 2, 3, 4, 9}, {6}}), {9, 6});
  expect16(Filled<int16_t>({{6}, {8, 2, 3, 5, 4}}), {6, 8});
}

TEST_P(Maximum, TheLargestIsFoundWhereverItStands) {
  for (size_t k = 0; k < 11; ++k) {
    std::vector<int> ray(11, 3);
    ray[k] = 200;
    expect8(Filled<uint8_t>({ray, {1}, ray}), {200, 1, 200});
    expect16(Filled<int16_t>({ray, {1}, ray}), {200, 1, 200});
  }
}

TEST_P(Maximum, NoRayOrANegativeEvenNumberOfRaysDoesNothing) {
  for (int32_t nrays : {0, -2, -64, INT_MIN}) {
    expect8(Filled<uint8_t>({{4, 9}}).pretend(nrays), {});
    expect16(Filled<int16_t>({{4, 9}}).pretend(nrays), {});
  }
}

TEST_P(Maximum, ANegativeOddNumberOfRaysIsOneRay) {
  for (int32_t nrays : {-1, -3, -65, INT_MIN + 1}) {
    expect8(Filled<uint8_t>({{4, 9}, {5}}).pretend(nrays), {9});
    expect16(Filled<int16_t>({{-4, -9}, {5}}).pretend(nrays), {-4});
    expect16(Filled<int16_t>({{}, {5}}).pretend(nrays), {-32768});
  }
}

TEST_P(Maximum, AMaskBitStandsForASampleMostSignificantFirst) {
  const uint8_t first_only[] = {0x80, 0x00};
  Filled<uint8_t> nine({{1, 2, 3, 4, 5, 6, 7, 8, 9}});
  EXPECT_EQ(maxima(operations().find_max_bmask_8u, nine, first_only), with_rest_untouched({1}));
  const uint8_t eighth_only[] = {0x01};
  Filled<int16_t> tens({{10, 20, 30, 40, 50, 60, 70, 80}, {10, 20, 30, 40, 50, 60, 70, 5}});
  EXPECT_EQ(maxima(operations().find_max_bmask_16s, tens, eighth_only), with_rest_untouched({80, 5}));
  const uint8_t ninth_only[] = {0x00, 0x80};
  EXPECT_EQ(maxima(operations().find_max_bmask_8u, nine, ninth_only), with_rest_untouched({9}));
}

TEST_P(Maximum, AMaskByteSelectsWhereItExceedsTheThreshold) {
  const uint8_t mask[] = {3, 5, 2};
  Filled<uint8_t> bytes({{9, 4, 7}});
  Filled<int16_t> shorts({{9, -4, 7}});
  for (int threshold : {3, 259, 3 - 256}) {  // only the low byte counts
    EXPECT_EQ(maxima(operations().find_max_cmask_8u, bytes, mask, threshold), with_rest_untouched({4}));
    EXPECT_EQ(maxima(operations().find_max_cmask_16s, shorts, mask, threshold), with_rest_untouched({-4}));
  }
  EXPECT_EQ(maxima(operations().find_max_cmask_8u, bytes, mask, 2), with_rest_untouched({9}));
}

TEST_P(Maximum, MaskBytesAreComparedWithoutSign) {
  const uint8_t mask[] = {127, 200, 0};
  Filled<uint8_t> bytes({{9, 4, 7}});
  EXPECT_EQ(maxima(operations().find_max_cmask_8u, bytes, mask, 128), with_rest_untouched({4}));
  EXPECT_EQ(maxima(operations().find_max_cmask_8u, bytes, mask, 256), with_rest_untouched({9}));
}

TEST_P(Maximum, NothingExceedsThreshold255) {
  Filled<uint8_t> bytes({{9, 4, 7}, {1}});
  Filled<int16_t> shorts({{9, 4, 7}, {1}});
  for (int threshold : {255, -1}) {
    EXPECT_EQ(maxima(operations().find_max_cmask_8u, bytes, kAllBits, threshold),
              with_rest_untouched({0, 0}));
    EXPECT_EQ(maxima(operations().find_max_cmask_16s, shorts, kAllBits, threshold),
              with_rest_untouched({-32768, -32768}));
  }
}

TEST_P(Maximum, ARayWhoseSelectedSamplesLieBeyondItsEndIsEmpty) {
  const uint8_t third_only[] = {0x20};
  const uint8_t third_byte[] = {0, 0, 1};
  Filled<uint8_t> bytes({{9, 4}, {1, 2, 3}});
  Filled<int16_t> shorts({{9, 4}, {1, 2, -3}});
  EXPECT_EQ(maxima(operations().find_max_bmask_8u, bytes, third_only), with_rest_untouched({0, 3}));
  EXPECT_EQ(maxima(operations().find_max_bmask_16s, shorts, third_only), with_rest_untouched({-32768, -3}));
  EXPECT_EQ(maxima(operations().find_max_cmask_8u, bytes, third_byte, 0), with_rest_untouched({0, 3}));
  EXPECT_EQ(maxima(operations().find_max_cmask_16s, shorts, third_byte, 0),
            with_rest_untouched({-32768, -3}));
}

INSTANTIATE_FOR_OPERATIONS(Maximum);

}  // namespace
}  // namespace zox_test
