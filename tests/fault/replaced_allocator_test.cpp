// The shared library with its allocator replaced: this program exports __zox_Malloc and __zox_Free,
// and the ray casters must use these. Blocks end at guard pages and are filled with rubbish, so a
// scratch table used beyond its size, or before it is filled, is seen.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "crash_note.h"
#include "effort.h"
#include "guarded_buffer.h"
#include "random_batch.h"
#include "scratch_case.h"
#include "zox_volume_names.h"

namespace zox_test {
namespace {

constexpr size_t kAlignment = 64;

struct Allocator {
  std::vector<int> requests;
  std::map<void*, GuardedBuffer> live;
  bool freed_unknown = false;
  size_t fail_at = 0;

  void restart(size_t fail_at_request) {
    requests.clear();
    live.clear();
    freed_unknown = false;
    fail_at = fail_at_request;
  }
};

Allocator allocator;

}  // namespace
}  // namespace zox_test

// NOLINTNEXTLINE(bugprone-reserved-identifier)
void* __zox_Malloc(int size) {
  using namespace zox_test;
  allocator.requests.push_back(size);
  if (allocator.requests.size() == allocator.fail_at || size < 1) return nullptr;
  const size_t bytes = (static_cast<size_t>(size) + kAlignment - 1) / kAlignment * kAlignment;
  GuardedBuffer buffer(bytes, GuardedBuffer::Flush::kEnd);
  void* block = buffer.data();
  std::memset(block, 0xB7, bytes);
  allocator.live[block] = std::move(buffer);
  return block;
}

// NOLINTNEXTLINE(bugprone-reserved-identifier)
void __zox_Free(void* block) {
  using namespace zox_test;
  if (block != nullptr && allocator.live.erase(block) == 0) allocator.freed_unknown = true;
}

namespace zox_test {
namespace {

class ReplacedAllocator : public testing::TestWithParam<int> {
 protected:
  const Caster& caster_ = kCasters[GetParam()];
};

void expect_nothing_kept(const std::string& what) {
  EXPECT_TRUE(allocator.live.empty()) << what;
  EXPECT_FALSE(allocator.freed_unknown) << what;
}

void fail_each_allocation(const Caster& caster, const ScratchSize& size) {
  ScratchCase batch(caster, size);
  const std::vector<int32_t> requests = scratch_requests(caster, size);
  const std::string what = to_string(caster, size);
  for (size_t n = 1; n <= requests.size() + 1; ++n) {
    const bool fails = n <= requests.size();
    allocator.restart(n);
    const int status = batch.run(caster.exported);
    ASSERT_EQ(fails ? ZOX_STS_NO_MEMORY : ZOX_STS_NO_ERROR, status) << what;
    const std::vector<int32_t> expected(
        requests.begin(), requests.begin() + static_cast<std::ptrdiff_t>(fails ? n : requests.size()));
    ASSERT_EQ(expected, allocator.requests) << what;
    expect_nothing_kept(what);
    ASSERT_TRUE(fails ? batch.planes_untouched() : batch.planes_right()) << what << ", failed request " << n;
  }
}

TEST_P(ReplacedAllocator, EachFailureIsReportedAndLeavesNothing) {
  if (caster_.blocked()) return;
  for (const ScratchSize& size : scratch_sizes(caster_)) {
    set_crash_note(to_string(caster_, size));
    fail_each_allocation(caster_, size);
    if (HasFatalFailure()) return;
  }
}

// With no ray the largest count is still that of entry 0; the parallel nearest casters return first.
TEST_P(ReplacedAllocator, FirstCountIsReadWithoutRays) {
  if (caster_.blocked()) return;
  fail_each_allocation(caster_, {2, 1, 512, 0});
  fail_each_allocation(caster_, {2, 1, 513, 0});
}

// Products of 32 bits: those that wrap to nothing or below are refused, and one that wraps to
// something is taken as it is. The latter are only safe without rays.
TEST_P(ReplacedAllocator, SizesWrapIn32Bits) {
  if (caster_.blocked()) return;
  const int log2 = caster_.trilinear() ? 10 : 9;
  std::vector<ScratchSize> refused = {{2, 1, 1 << (32 - log2)}, {2, 1, 1 << (31 - log2)}, {2, 1, INT_MAX}};
  if (!caster_.fixed_tables()) {
    refused.insert(
        refused.end(),
        {{2, 1 << 29, 1}, {2, 1 << 30, 1}, {(1 << 29) - 1, 1, 1}, {(1 << 30) - 1, 1, 1}, {INT_MAX, 1, 1}});
  }
  for (const ScratchSize& size : refused) {
    const std::string what = to_string(caster_, size);
    const std::vector<int32_t> requests = scratch_requests(caster_, size);
    ASSERT_EQ(1u, requests.size()) << what;
    ASSERT_LT(requests[0], 1) << what;
    ScratchCase batch(caster_, size);
    allocator.restart(0);
    EXPECT_EQ(ZOX_STS_NO_MEMORY, batch.run(caster_.exported)) << what;
    EXPECT_EQ(requests, allocator.requests) << what;
    EXPECT_TRUE(batch.planes_untouched()) << what;
    expect_nothing_kept(what);
  }
  if (caster_.parallel() && !caster_.trilinear()) return;
  const ScratchSize wraps_to_one_sample{2, 1, (1 << (32 - log2)) + 1, 0};
  ASSERT_EQ(std::vector<int32_t>{1 << log2}, scratch_requests(caster_, wraps_to_one_sample));
  fail_each_allocation(caster_, wraps_to_one_sample);
}

// Random batches that need the heap: right with rubbish in exact blocks, untouched when refused.
TEST_P(ReplacedAllocator, RandomBatchesFailCleanly) {
  const Seeds chosen = seeds(8000000, 1500);
  for (uint64_t seed = chosen.first; seed < chosen.first + chosen.count; ++seed) {
    RandomBatch batch(caster_, seed);
    set_crash_note(batch.describe());
    allocator.restart(0);
    const RandomBatch::Outcome granted = batch.run(caster_.exported);
    ASSERT_EQ(ZOX_STS_NO_ERROR, granted.status) << batch.describe();
    expect_nothing_kept(batch.describe());
    const std::vector<int> requests = allocator.requests;
    if (requests.empty()) continue;
    ASSERT_TRUE(batch.run(caster_.reference).planes == granted.planes) << batch.describe();
    for (size_t n = 1; n <= requests.size(); ++n) {
      allocator.restart(n);
      const RandomBatch::Outcome refused = batch.run(caster_.exported);
      ASSERT_EQ(ZOX_STS_NO_MEMORY, refused.status) << batch.describe();
      ASSERT_EQ(std::vector<uint8_t>(refused.planes.size(), batch.pattern()), refused.planes)
          << batch.describe();
      expect_nothing_kept(batch.describe());
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Fault, ReplacedAllocator, testing::Range(0, kCasterCount),
                         [](const testing::TestParamInfo<int>& info) {
                           return std::string(kCasters[info.param].name);
                         });

}  // namespace
}  // namespace zox_test
