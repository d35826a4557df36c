// Many threads on one volume, each with its own counts and planes: the same bytes as alone.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "effort.h"
#include "random_batch.h"

namespace zox_test {
namespace {

constexpr int kThreads = 8;
constexpr int kVolumes = 40;
constexpr int kRepeats = 3;

// One thread's share: the rays of a common batch, cut at other counts. Counts move no sample, so
// every share reads voxels that the common volume has.
class Share {
 public:
  Share(const RandomBatch& batch, int element_size, Random& random)
      : volume_(batch.volume()), rays_(batch.rays()) {
    const int rays = std::max(0, rays_.nrays);
    int longest = 0;
    for (int r = 0; r < std::max(1, rays); ++r) {
      const int most = rays_.nsamples[r];
      counts_.push_back(most > 0 ? random.whole(most / 2, most) : most);
      if (r < rays) longest = std::max(longest, counts_.back());
    }
    planes_ = Planes(longest, rays, element_size, random);
    rays_.nsamples = counts_.data();
    rays_.planes = planes_.pointers();
  }

  void run(zox::RayCast cast) {
    planes_.fill(0xC3);
    status_ = cast(&volume_, &rays_);
  }
  int status() const { return status_; }
  std::vector<uint8_t> contents() const { return planes_.contents(); }

 private:
  zox_Volume volume_;
  zox_Rays rays_;
  std::vector<int32_t> counts_;
  Planes planes_;
  int status_ = 0;
};

class Threads : public testing::TestWithParam<int> {};

void run_together(std::vector<Share>& shares, zox::RayCast cast) {
  std::atomic<int> waiting{0};
  std::vector<std::thread> threads;
  for (Share& share : shares) {
    threads.emplace_back([&] {
      ++waiting;
      while (waiting < kThreads) std::this_thread::yield();
      for (int i = 0; i < kRepeats; ++i) share.run(cast);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST_P(Threads, ResultsAreThoseOfOneThread) {
  const Caster& caster = kCasters[GetParam()];
  const Seeds chosen = seeds(5000000, kVolumes);
  for (uint64_t seed = chosen.first; seed < chosen.first + chosen.count; ++seed) {
    RandomBatch batch(caster, seed);
    Random random(seed);
    std::vector<Share> shares;
    std::vector<std::vector<uint8_t>> expected;
    for (int t = 0; t < kThreads; ++t) {
      shares.emplace_back(batch, caster.element_size(), random);
      shares.back().run(caster.reference);
      expected.push_back(shares.back().contents());
    }
    run_together(shares, caster.exported);
    for (size_t t = 0; t < shares.size(); ++t) {
      ASSERT_EQ(0, shares[t].status()) << batch.describe();
      ASSERT_TRUE(expected[t] == shares[t].contents()) << "thread " << t << ", " << batch.describe();
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Differential, Threads, testing::Range(0, kCasterCount),
                         [](const testing::TestParamInfo<int>& info) {
                           return std::string(kCasters[info.param].name);
                         });

}  // namespace
}  // namespace zox_test
