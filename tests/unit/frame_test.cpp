// Status texts, version, thread count and the aligned allocator, under both names of each.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

#include "zox_volume.h"
#include "zox_volume_names.h"

// An impossible request has to come back as null from malloc, which AddressSanitizer must be told.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }

namespace {

const int32_t kThreadsAtLoad = zox_nthreads;

TEST(Status, EveryCodeHasItsText) {
  EXPECT_STREQ(zox_GetStringStatus(0), "No error");
  EXPECT_STREQ(zox_GetStringStatus(1), "Invalid, out of range or unsupported parameter");
  EXPECT_STREQ(zox_GetStringStatus(2), "Not enough memory for the function");
  EXPECT_STREQ(zox_GetStringStatus(3), "Incorrect data found (exception) during the execution");
  EXPECT_STREQ(__zox_GetStringStatus(3), "Incorrect data found (exception) during the execution");
}

TEST(Status, EveryOtherNumberIsUnknown) {
  for (int status : {4, -1, 256, INT_MAX, INT_MIN}) {
    EXPECT_STREQ(zox_GetStringStatus(status), "Unknown Status") << status;
    EXPECT_STREQ(__zox_GetStringStatus(status), "Unknown Status") << status;
  }
}

TEST(Version, IsTheWhatStringWithoutItsMarker) {
  EXPECT_EQ(sizeof zoxid, 39u);
  const std::string version = "ZOX:" + std::to_string(ZOX_VOLUME_VERSION) + ":20240723:linux-x8664:svn:";
  EXPECT_EQ(zoxid, "@(#)" + version);
  EXPECT_EQ(zox_GetVersion(), version);
  EXPECT_EQ(__zox_GetVersion(), version);
}

TEST(Version, HasBytesOfItsOwn) {
  const char* version = zox_GetVersion();
  EXPECT_TRUE(version < zoxid || version >= zoxid + sizeof zoxid);
}

TEST(Threads, StandAtMinusOneUntilSet) { EXPECT_EQ(kThreadsAtLoad, -1); }

TEST(Threads, AnyNumberIsTakenAndGivenBack) {
  for (int count : {0, 8, -3, INT_MAX, INT_MIN}) {
    int read = ~count;
    EXPECT_EQ(zox_SetNumThreads(count), ZOX_STS_NO_ERROR);
    EXPECT_EQ(zox_nthreads, count);
    EXPECT_EQ(zox_GetNumThreads(&read), ZOX_STS_NO_ERROR);
    EXPECT_EQ(read, count);
  }
}

TEST(Threads, SecondNamesShareTheSetting) {
  int read = 0;
  EXPECT_EQ(__zox_SetNumThreads(5), ZOX_STS_NO_ERROR);
  EXPECT_EQ(zox_GetNumThreads(&read), ZOX_STS_NO_ERROR);
  EXPECT_EQ(read, 5);
  EXPECT_EQ(zox_SetNumThreads(6), ZOX_STS_NO_ERROR);
  EXPECT_EQ(__zox_GetNumThreads(&read), ZOX_STS_NO_ERROR);
  EXPECT_EQ(read, 6);
}

TEST(Malloc, GivesWholeAlignedBlocks) {
  for (int size : {1, 63, 64, 65, 1000, 100000}) {
    void* block = zox_Malloc(size);
    ASSERT_NE(block, nullptr) << size;
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 64, 0u) << size;
    std::memset(block, 0x5A, static_cast<size_t>(size));
    zox_Free(block);
  }
}

TEST(Malloc, KeepsTheRawPointerBelowTheBlock) {
  void* block = __zox_Malloc(10);
  ASSERT_NE(block, nullptr);
  void* raw;
  std::memcpy(&raw, static_cast<char*>(block) - sizeof raw, sizeof raw);
  const auto padding = reinterpret_cast<uintptr_t>(block) - reinterpret_cast<uintptr_t>(raw);
  EXPECT_GE(padding, 8u);
  EXPECT_LE(padding, 71u);
  __zox_Free(block);
}

TEST(Malloc, RefusesSizesBelowOne) {
  EXPECT_EQ(zox_Malloc(0), nullptr);
  EXPECT_EQ(zox_Malloc(-5), nullptr);
  EXPECT_EQ(zox_Malloc(INT_MIN), nullptr);
}

// Size + 64 wraps to a negative number, which no allocator can give.
TEST(Malloc, RefusesSizesThatWrap) {
  EXPECT_EQ(zox_Malloc(INT_MAX), nullptr);
  EXPECT_EQ(zox_Malloc(INT_MAX - 63), nullptr);
}

TEST(Free, IgnoresNull) {
  zox_Free(nullptr);
  __zox_Free(nullptr);
}

void* address(intptr_t value) { return reinterpret_cast<void*>(value); }

TEST(AlignPointer, RoundsUpToTheAlignment) {
  EXPECT_EQ(zox_AlignPointer(address(64), 64), address(64));
  EXPECT_EQ(zox_AlignPointer(address(65), 64), address(128));
  EXPECT_EQ(zox_AlignPointer(address(127), 64), address(128));
  EXPECT_EQ(zox_AlignPointer(address(77), 1), address(77));
  EXPECT_EQ(__zox_AlignPointer(address(9), 8), address(16));
}

// -align and align - 1 are widened with their sign: addresses above 4 GiB keep their upper half.
TEST(AlignPointer, KeepsHighAddresses) {
  EXPECT_EQ(zox_AlignPointer(address(0x7FFF12345641), 64), address(0x7FFF12345680));
}

TEST(AlignPointer, GivesNullForAlignmentZero) { EXPECT_EQ(zox_AlignPointer(address(65), 0), nullptr); }

}  // namespace
