// Random rows through the window/level mapping, apart and overlapping, on every instruction set.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "cases.h"
#include "crash_note.h"
#include "guarded_buffer.h"
#include "reference.h"
#include "window_rows.h"

namespace zox_test {
namespace {

constexpr int kRows = 6000;

std::string describe(const char* target, uint64_t seed, int length, const Window& w) {
  std::ostringstream text;
  text << target << " seed " << seed << ": length " << length << ", window " << w.center << " " << w.width
       << ", out " << w.outmin << " " << w.outmax;
  return text.str();
}

class WindowLevel : public OperationsTest {
 protected:
  Mapping mapping_ = operations().window_level_16s_8u;
  Seeds seeds_ = seeds_of(operations(), kRows);
};

int draw_length(Random& random) {
  if (random.chance(0.02)) return random.whole(101, 5000);
  return random.chance(0.02) ? -random.whole(1, 100) : random.whole(0, 100);
}

TEST_P(WindowLevel, MatchesReferenceOnSeparateRows) {
  for (uint64_t seed = seeds_.first; seed < seeds_.first + seeds_.count; ++seed) {
    Random random(seed);
    const Window w = draw_window(random);
    const int length = draw_length(random);
    const size_t count = static_cast<size_t>(std::max(0, length));
    GuardedBuffer src(2 * count, random), expected(count, random), actual(count, random);
    fill_row(src.as<int16_t>(), static_cast<int>(count), w, random);
    src.seal();
    for (const GuardedBuffer* dst : {&expected, &actual}) {
      std::memset(dst->data(), 0x5A, dst->size());
      std::memset(dst->margin(), 0x5A, dst->margin_size());
    }
    const std::string what = describe(operations().name, seed, length, w);
    set_crash_note(what);
    const int status = reference::window_level_16s_8u(src.as<int16_t>(), expected.data(), length, w.center,
                                                      w.width, w.outmin, w.outmax);
    ASSERT_EQ(status,
              mapping_(src.as<int16_t>(), actual.data(), length, w.center, w.width, w.outmin, w.outmax))
        << what;
    for (size_t i = 0; i < count; ++i) {
      ASSERT_EQ(int{expected.data()[i]}, int{actual.data()[i]})
          << "value " << src.as<int16_t>()[i] << " at " << i << "\n"
          << what;
    }
    const uint8_t* margin = actual.margin();
    ASSERT_TRUE(std::all_of(margin, margin + actual.margin_size(), [](uint8_t b) { return b == 0x5A; }))
        << what;
  }
}

// Source and destination in one buffer at any distance: the row is then mapped value by value in
// rising order, as the reference does.
TEST_P(WindowLevel, MatchesReferenceOnOverlappingRows) {
  for (uint64_t seed = seeds_.first; seed < seeds_.first + seeds_.count; ++seed) {
    Random random(seed);
    const Window w = draw_window(random);
    const int length = random.whole(0, 100);
    const int total = 2 * length + random.whole(0, 150);
    const int src_at = random.whole(0, (total - 2 * length) / 2) * 2;
    const int dst_at = random.chance(0.3) ? src_at : random.whole(0, total - length);
    const auto flush =
        total % 2 != 0 || random.chance(0.5) ? GuardedBuffer::Flush::kStart : GuardedBuffer::Flush::kEnd;
    GuardedBuffer expected(static_cast<size_t>(total), flush), actual(static_cast<size_t>(total), flush);
    fill_row(expected.as<int16_t>(), total / 2, w, random);
    if (total % 2 != 0) expected.data()[total - 1] = 1;
    if (total > 0) std::memcpy(actual.data(), expected.data(), static_cast<size_t>(total));
    const std::string what = describe(operations().name, seed, length, w) + ", source at " +
                             std::to_string(src_at) + ", destination at " + std::to_string(dst_at);
    set_crash_note(what);
    const auto map = [&](Mapping mapping, const GuardedBuffer& buffer) {
      return mapping(reinterpret_cast<const int16_t*>(buffer.data() + src_at), buffer.data() + dst_at, length,
                     w.center, w.width, w.outmin, w.outmax);
    };
    ASSERT_EQ(map(reference::window_level_16s_8u, expected), map(mapping_, actual)) << what;
    ASSERT_TRUE(std::equal(expected.data(), expected.data() + total, actual.data())) << what;
  }
}

// Every value there is, through windows of every kind.
TEST_P(WindowLevel, MatchesReferenceOnEveryValue) {
  std::vector<int16_t> src(65536);
  for (int v = -32768; v <= 32767; ++v) src[static_cast<size_t>(v + 32768)] = static_cast<int16_t>(v);
  std::vector<uint8_t> expected(src.size()), actual(src.size());
  const uint64_t windows = seeds_.count / 100 + 1;
  for (uint64_t seed = seeds_.first; seed < seeds_.first + windows; ++seed) {
    Random random(seed);
    const Window w = draw_window(random);
    const int length = static_cast<int>(src.size());
    reference::window_level_16s_8u(src.data(), expected.data(), length, w.center, w.width, w.outmin,
                                   w.outmax);
    mapping_(src.data(), actual.data(), length, w.center, w.width, w.outmin, w.outmax);
    const auto differs = std::mismatch(expected.begin(), expected.end(), actual.begin());
    ASSERT_TRUE(differs.first == expected.end())
        << "value " << differs.first - expected.begin() - 32768 << "\n"
        << describe(operations().name, seed, length, w);
  }
}

INSTANTIATE_TEST_SUITE_P(All, WindowLevel, testing::ValuesIn(all_targets()), target_name);

}  // namespace
}  // namespace zox_test
