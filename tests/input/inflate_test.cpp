// Packed streams, whole and not.
#include "inflate.h"

#include <random>

#include "scratch.h"

namespace zox::input {
namespace {

std::string some_bytes(size_t count) {
  std::mt19937 random(7);
  std::string bytes;
  for (size_t i = 0; i < count; ++i) bytes += static_cast<char>(random() % 7);
  return bytes;
}

// The bytes from `skip` on, `count` of them; empty when there are fewer or the stream is damaged.
std::string inflated(const std::string& packed, uint64_t skip, uint64_t total, size_t count) {
  std::string room(kSkipInPlace + count, '\0');
  const std::span<std::byte> all = std::as_writable_bytes(std::span(room));
  if (!inflate_into(std::as_bytes(std::span(packed)), skip, total, all.subspan(kSkipInPlace))) return "";
  return room.substr(kSkipInPlace);
}

TEST(Inflate, GivesAnyPartOfAStream) {
  const std::string bytes = some_bytes(1300000);
  const std::string two = gzipped(bytes.substr(0, 1000)) + gzipped(bytes.substr(1000));
  for (const std::string& packed : {gzipped(bytes), deflated(bytes), two})
    for (const size_t skip : {size_t{0}, size_t{1}, size_t{352}, size_t{1100000}})
      for (const size_t left : {size_t{0}, size_t{1}, size_t{100000}}) {
        const size_t count = bytes.size() - skip - left;
        // Nothing but speed depends on what is thought to be there in all.
        for (const size_t total : {bytes.size(), size_t{0}})
          EXPECT_TRUE(inflated(packed, skip, total, count) == bytes.substr(skip, count))
              << skip << ", " << left;
      }
}

TEST(Inflate, MissesWhatIsNotThere) {
  const std::string bytes = some_bytes(100000);
  const std::string packed = gzipped(bytes);
  EXPECT_EQ(inflated(packed, 0, 100001, 100001), "");
  EXPECT_EQ(inflated(packed, 1, 100001, 100000), "");
  EXPECT_EQ(inflated("", 0, 5, 5), "");
  EXPECT_EQ(inflated("not packed", 0, 5, 5), "");
  for (const size_t cut : {size_t{1}, size_t{8}, size_t{9}, packed.size() / 2, packed.size() - 3}) {
    EXPECT_EQ(inflated(packed.substr(0, packed.size() - cut), 0, 100000, 100000), "") << cut;
    EXPECT_EQ(inflated(packed.substr(0, packed.size() - cut), 0, 100000, 100), "") << cut;
  }
  std::string damaged = packed;
  damaged[damaged.size() - 6] ^= 1;  // in the checksum
  EXPECT_EQ(inflated(damaged, 0, 100000, 100000), "");
  EXPECT_EQ(inflated(damaged, 0, 100000, 100), "");
}

TEST(Inflate, GivesTheHeadOfACutStream) {
  const std::string bytes = some_bytes(100000);
  const std::string packed = gzipped(bytes);
  const std::string half = packed.substr(0, packed.size() / 2);
  EXPECT_EQ(inflate_head(std::as_bytes(std::span(half)), 500), bytes.substr(0, 500));
  EXPECT_EQ(inflate_head(std::as_bytes(std::span(packed)), 200000).size(), 100000U);
}

}  // namespace
}  // namespace zox::input
