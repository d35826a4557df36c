// Whatever runs in the child, the caller has an answer.
#include "child_process.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

namespace zox::input {
namespace {

constexpr Limits kLimits = {uint64_t{1} << 30, 20};

TEST(ChildProcess, AnswersAtAnyLength) {
  for (const size_t length : {size_t{0}, size_t{1}, size_t{70000}, size_t{5000000}}) {
    const std::string bytes(length, 'x');
    EXPECT_EQ(run_in_child(kLimits, [&] { return bytes; }).bytes, bytes);
  }
}

Mapping numbered_block(size_t bytes) {
  Mapping block = map_zeros(bytes);
  auto* const at = static_cast<uint8_t*>(block.get());
  for (size_t i = 0; i < bytes; ++i) at[i] = static_cast<uint8_t>(i % 251);
  return block;
}

TEST(ChildProcess, HandsABlockOver) {
  for (const size_t length : {size_t{1}, size_t{4097}, size_t{2 << 20}, size_t{5000001}}) {
    const Answer answer = run_in_child(kLimits, [&] { return Given("text", numbered_block(length)); });
    EXPECT_EQ(answer.bytes, "text");
    ASSERT_NE(answer.block, nullptr) << length;
    ASSERT_GE(answer.block.get_deleter().bytes, length);
    const Mapping wanted = numbered_block(length);
    EXPECT_EQ(std::memcmp(answer.block.get(), wanted.get(), length), 0) << length;
  }
  EXPECT_EQ(run_in_child(kLimits, [] { return std::string("text"); }).block, nullptr);
}

TEST(ChildProcess, HandsNoMoreOverThanItMay) {
  Mapping block = numbered_block(size_t{8} << 20);
  const auto give = [&] { return Given("text", std::move(block)); };
  EXPECT_NE(run_in_child({size_t{16} << 20, 20}, give).block, nullptr);
  const Answer answer = run_in_child({size_t{4} << 20, 20}, give);
  EXPECT_EQ(answer.bytes, "");
  EXPECT_EQ(answer.block, nullptr);
}

// Nobody takes half a block for a whole one.
TEST(ChildProcess, HandsABlockOverWhollyOrNot) {
  const Answer answer = run_in_child(kLimits, [] {
    Mapping block = map_zeros(size_t{8} << 20);
    mprotect(static_cast<std::byte*>(block.get()) + (size_t{4} << 20), size_t{4} << 20, PROT_NONE);
    return Given("text", std::move(block));
  });
  EXPECT_EQ(answer.bytes, "");
  EXPECT_EQ(answer.block, nullptr);
}

TEST(ChildProcess, CrashesAlone) {
  for (const int signal : {SIGABRT, SIGSEGV, SIGFPE, SIGBUS, SIGILL}) {
    const Answer answer = run_in_child(kLimits, [&] {
      raise(signal);
      return std::string("lived");
    });
    EXPECT_EQ(answer.bytes, "") << signal;
    EXPECT_FALSE(answer.timed_out) << signal;
    EXPECT_EQ(answer.signal, signal);
  }
  const auto leave = [] {
    std::exit(0);
    return std::string("lived");
  };
  EXPECT_EQ(run_in_child(kLimits, leave).bytes, "");
}

TEST(ChildProcess, EndsInTime) {
  const auto sleep = [] {
    for (;;) pause();
    return std::string();
  };
  const auto work = [] {
    volatile bool ends = false;
    while (!ends) {
    }
    return std::string();
  };
  EXPECT_TRUE(run_in_child({kLimits.memory, 0.2}, sleep).timed_out);
  EXPECT_TRUE(run_in_child({kLimits.memory, 0.2}, work).timed_out);
}

TEST(ChildProcess, MayNotTakeMoreMemory) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the address sanitizer maps more than any limit";
#endif
  const Answer answer = run_in_child({uint64_t{100} << 20, 20}, [] {
    try {
      const std::vector<char> much(size_t{200} << 20);
      return std::string("had ") + much[0];
    } catch (const std::bad_alloc&) {
      return std::string("had not");
    }
  });
  EXPECT_EQ(answer.bytes, "had not");
}

TEST(ChildProcess, PrintsNowhere) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const Answer answer = run_in_child(kLimits, [] {
    std::printf("words\n");
    std::fprintf(stderr, "words\n");
    std::fflush(nullptr);
    return std::string("done");
  });
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(answer.bytes, "done");
}

}  // namespace
}  // namespace zox::input
