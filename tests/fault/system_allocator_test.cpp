// Every system allocation of every operation failed in turn, on every instruction set.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "cases.h"
#include "random_batch.h"
#include "scratch_case.h"
#include "watched_malloc.h"

namespace zox_test {
namespace {

class SystemAllocator : public CasterTest {};

// What zox_Malloc makes of the library's requests.
std::vector<size_t> system_requests(const std::vector<int32_t>& requests, size_t count) {
  std::vector<size_t> sizes;
  for (size_t i = 0; i < count; ++i) sizes.push_back(static_cast<size_t>(requests[i]) + 72);
  return sizes;
}

void expect_nothing_kept(const std::string& what) {
  EXPECT_TRUE(watched_malloc.live.empty()) << what;
  EXPECT_FALSE(watched_malloc.freed_unknown) << what;
}

void fail_each_allocation(const Caster& caster, zox::RayCast cast, const ScratchSize& size) {
  ScratchCase batch(caster, size);
  const std::vector<int32_t> requests = scratch_requests(caster, size);
  const std::string what = to_string(caster, size);
  for (size_t n = 1; n <= requests.size() + 1; ++n) {
    const bool fails = n <= requests.size();
    const int status = batch.run([&](const zox_Volume* volume, const zox_Rays* rays) {
      watched_malloc.start(n);
      const int status_of_call = cast(volume, rays);
      watched_malloc.stop();
      return status_of_call;
    });
    ASSERT_EQ(fails ? ZOX_STS_NO_MEMORY : ZOX_STS_NO_ERROR, status) << what;
    ASSERT_EQ(system_requests(requests, fails ? n : requests.size()), watched_malloc.requests) << what;
    expect_nothing_kept(what);
    ASSERT_TRUE(fails ? batch.planes_untouched() : batch.planes_right()) << what << ", failed request " << n;
  }
}

TEST_P(SystemAllocator, EachFailureIsReportedAndLeavesNothing) {
  if (caster().blocked()) return;
  for (const ScratchSize& size : scratch_sizes(caster())) {
    fail_each_allocation(caster(), cast(), size);
    if (HasFatalFailure()) return;
  }
}

TEST_P(SystemAllocator, BlockedCastersAskForNothing) {
  if (!caster().blocked()) return;
  const Seeds chosen = seeds(7000000, 50);
  for (uint64_t seed = chosen.first; seed < chosen.first + chosen.count; ++seed) {
    RandomBatch batch(caster(), seed);
    watched_malloc.start();
    cast()(&batch.volume(), &batch.rays());
    watched_malloc.stop();
    ASSERT_TRUE(watched_malloc.requests.empty()) << batch.describe();
  }
}

INSTANTIATE_CASTERS(SystemAllocator, all_targets(), every_caster);

// The maxima and the window/level mapping work in their arguments alone.
TEST(SystemAllocatorOthers, AskForNothing) {
  uint8_t byte_plane[3] = {1, 2, 3}, mask[1] = {0xFF}, mapped[3];
  int16_t word_plane[3] = {1, 2, 3}, maxima[3];
  const int threshold = 0;
  void* byte_planes[] = {byte_plane};
  void* word_planes[] = {word_plane};
  const int32_t counts[] = {1, 1, 1};
  const zox_Rays bytes{byte_planes, 3, nullptr, nullptr, counts};
  const zox_Rays words{word_planes, 3, nullptr, nullptr, counts};
  for (const zox::Operations* set : zox::kAllOperations) {
    if (!set->supported()) continue;
    watched_malloc.start();
#define ZOX_TEST_MAXIMUM(Name, name, Element, Mask) \
  set->name(sizeof(Element) == 1 ? &bytes : &words, \
            ZOX_MASK_ARGUMENTS_##Mask reinterpret_cast<Element*>(maxima));
    ZOX_MAXIMA(ZOX_TEST_MAXIMUM)
    set->window_level_16s_8u(word_plane, mapped, 3, 0, 100, 0, 255);
    watched_malloc.stop();
    EXPECT_TRUE(watched_malloc.requests.empty()) << set->name;
  }
}

}  // namespace
}  // namespace zox_test
