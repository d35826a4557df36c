// zox_Malloc, zox_Free and zox_AlignPointer over a watched malloc.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>

#include "watched_malloc.h"
#include "zox_volume.h"

namespace zox_test {
namespace {

uintptr_t aligned(uintptr_t pointer, int alignment) {
  return reinterpret_cast<uintptr_t>(zox_AlignPointer(reinterpret_cast<void*>(pointer), alignment));
}

TEST(Malloc, SizesBelowOneNeverReachTheSystem) {
  for (const int size : {0, -1, -5, INT_MIN}) {
    watched_malloc.start();
    EXPECT_EQ(nullptr, zox_Malloc(size)) << size;
    watched_malloc.stop();
    EXPECT_TRUE(watched_malloc.requests.empty()) << size;
  }
}

TEST(Malloc, AsksForTheSizeAndSeventyTwoBytes) {
  for (const int size : {1, 63, 64, 65, 512, 100000}) {
    watched_malloc.start();
    void* block = zox_Malloc(size);
    ASSERT_NE(nullptr, block);
    std::memset(block, 0xEE, static_cast<size_t>(size));
    EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(block) % 64);
    ASSERT_EQ(1u, watched_malloc.requests.size());
    EXPECT_EQ(static_cast<size_t>(size) + 72, watched_malloc.requests[0]);
    void* raw;
    std::memcpy(&raw, static_cast<char*>(block) - 8, sizeof raw);
    EXPECT_EQ(watched_malloc.live.at(0), raw);
    zox_Free(block);
    watched_malloc.stop();
    EXPECT_TRUE(watched_malloc.live.empty());
    EXPECT_FALSE(watched_malloc.freed_unknown);
  }
}

// The block is the first multiple of 64 that leaves 8 bytes below it, wherever malloc's memory lies.
TEST(Malloc, AlignsWhateverTheSystemReturns) {
  alignas(64) static char memory[512];
  for (int at = 0; at < 64; ++at) {
    watched_malloc.start();
    watched_malloc.next_result = memory + 64 + at;
    char* block = static_cast<char*>(zox_Malloc(100));
    // 64 + at + 8 rounded up: 128 up to at = 56, then 192.
    EXPECT_EQ(memory + (at <= 56 ? 128 : 192), block) << at;
    zox_Free(block);
    watched_malloc.stop();
    EXPECT_TRUE(watched_malloc.live.empty()) << at;
    EXPECT_FALSE(watched_malloc.freed_unknown) << at;
  }
}

TEST(Malloc, RefusalOfTheSystemIsNull) {
  watched_malloc.start(1);
  EXPECT_EQ(nullptr, zox_Malloc(1000));
  watched_malloc.stop();
  EXPECT_EQ(1u, watched_malloc.requests.size());
}

// size + 64 is a 32-bit sum: past INT_MAX it wraps, and the negative sum, widened with its sign, is
// more than any system has.
TEST(Malloc, SumsThatWrapAreRequestsNobodyGrants) {
  watched_malloc.start();
  EXPECT_EQ(nullptr, zox_Malloc(INT_MAX - 64));
  EXPECT_EQ(nullptr, zox_Malloc(INT_MAX - 63));
  EXPECT_EQ(nullptr, zox_Malloc(INT_MAX));
  watched_malloc.stop();
  ASSERT_EQ(3u, watched_malloc.requests.size());
  EXPECT_EQ(size_t{0x80000007u}, watched_malloc.requests[0]);
  EXPECT_EQ(size_t{0xFFFFFFFF80000008u}, watched_malloc.requests[1]);
  EXPECT_EQ(size_t{0xFFFFFFFF80000047u}, watched_malloc.requests[2]);
}

TEST(Free, NullIsNothing) {
  watched_malloc.start();
  zox_Free(nullptr);
  watched_malloc.stop();
  EXPECT_FALSE(watched_malloc.freed_unknown);
}

TEST(AlignPointer, RoundsUp) {
  EXPECT_EQ(64u, aligned(64, 64));
  EXPECT_EQ(128u, aligned(65, 64));
  EXPECT_EQ(128u, aligned(127, 64));
  EXPECT_EQ(65u, aligned(65, 1));
  EXPECT_EQ(uintptr_t{0x7F0000002000}, aligned(0x7F0000001001, 4096));
  EXPECT_EQ(0u, aligned(0, 64));
}

TEST(AlignPointer, OddAlignmentsFollowTheArithmetic) {
  EXPECT_EQ(0u, aligned(12345, 0));
  // -1: (p - 2) AND 1.
  EXPECT_EQ(1u, aligned(65, -1));
  EXPECT_EQ(0u, aligned(64, -1));
  // The smallest integer: less one wraps to 0x7FFFFFFF, and negated stays itself.
  EXPECT_EQ(uintptr_t{0x80000000}, aligned(1, INT_MIN));
  EXPECT_EQ(uintptr_t{0x180000000}, aligned(0x100000001, INT_MIN));
}

}  // namespace
}  // namespace zox_test
