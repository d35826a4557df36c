// Each function of src/sets/ beside a plain loop, for every set that this processor runs.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <random>

#include "functions.h"
#include "operations/table.h"

namespace zox_test {
namespace {

constexpr int kMostLanes = 16;
constexpr int kRounds = 2000;
using Lanes = std::array<int, kMostLanes>;

struct Set {
  const zox::Operations& operations;  // name and whether it is here
  const SetFunctions& functions;
};
const Set kSets[] = {{zox::base::kOperations, zox::base::kSetFunctions},
                     {zox::avx2::kOperations, zox::avx2::kSetFunctions},
                     {zox::avx512::kOperations, zox::avx512::kSetFunctions}};

int wrapped(int64_t v) { return static_cast<int>(static_cast<uint32_t>(v)); }

class Sets : public testing::TestWithParam<Set> {
 protected:
  void SetUp() override {
    if (!GetParam().operations.supported()) GTEST_SKIP() << "this processor lacks " << name();
  }

  const char* name() const { return GetParam().operations.name; }
  const SetFunctions& set() const { return GetParam().functions; }
  int lanes() const { return set().lanes; }

  // Extremes, small numbers, of which some are equal, and any.
  int number() {
    static constexpr int kExtremes[] = {INT_MIN, INT_MIN + 1, -1, 0, 1, INT_MAX - 1, INT_MAX};
    switch (random_() % 3) {
      case 0:
        return kExtremes[random_() % std::size(kExtremes)];
      case 1:
        return static_cast<int>(random_() % 5) - 2;
      default:
        return static_cast<int>(random_());
    }
  }

  Lanes numbers() {
    Lanes v;
    for (int& n : v) n = number();
    return v;
  }

  // `of` lane by lane; what lies behind the set's lanes stays.
  template <class Of>
  void expect_lanes(const Lanes& out, const Lanes& before, Of of) {
    for (int i = 0; i < kMostLanes; ++i) {
      ASSERT_EQ(out[i], i < lanes() ? of(i) : before[i]) << name() << ", lane " << i;
    }
  }

  template <class Of>
  void expect_binary(SetFunctions::Binary function, Of of) {
    for (int round = 0; round < kRounds; ++round) {
      const Lanes a = numbers(), b = numbers(), before = numbers();
      Lanes out = before;
      function(a.data(), b.data(), out.data());
      ASSERT_NO_FATAL_FAILURE(expect_lanes(out, before, [&](int i) { return of(a, b, i); }));
    }
  }

  std::mt19937 random_{1};
};

TEST_P(Sets, Broadcast) {
  Lanes all;
  set().broadcast(-7, all.data());
  EXPECT_TRUE(std::all_of(all.begin(), all.begin() + lanes(), [](int n) { return n == -7; })) << name();
}

TEST_P(Sets, FindTheSmaller) {
  expect_binary(set().smaller, [](auto& a, auto& b, int i) { return std::min(a[i], b[i]); });
}

TEST_P(Sets, LookAtLanesBefore) {
  expect_binary(set().before_1,
                [&](auto& before, auto& v, int i) { return i < 1 ? before[lanes() - 1] : v[i - 1]; });
  if (lanes() < 8) return;
  expect_binary(set().before_8,
                [&](auto& before, auto& v, int i) { return i < 8 ? before[lanes() - 8 + i] : v[i - 8]; });
}

TEST_P(Sets, ChooseByMasks) {
  for (int round = 0; round < kRounds; ++round) {
    const Lanes a = numbers(), b = numbers(), c = numbers(), d = numbers(), before = numbers();
    unsigned ab = 0, cd = 0;
    for (int i = 0; i < lanes(); ++i) {
      ab |= unsigned{a[i] == b[i]} << i;
      cd |= unsigned{c[i] == d[i]} << i;
    }
    EXPECT_EQ(set().equal(a.data(), b.data()), ab) << name();
    EXPECT_EQ(set().both_equal(a.data(), b.data(), c.data(), d.data()), ab & cd) << name();
    Lanes out = before;
    set().select_equal(a.data(), b.data(), c.data(), d.data(), out.data());
    expect_lanes(out, before, [&](int i) { return ab >> i & 1 ? c[i] : d[i]; });
    set().add_where_equal(a.data(), b.data(), c.data(), d.data(), out.data());
    expect_lanes(out, before, [&](int i) { return ab >> i & 1 ? wrapped(int64_t{c[i]} + d[i]) : c[i]; });
  }
}

TEST_P(Sets, ShiftWithTheSign) {
  for (int bits = 0; bits < 32; ++bits) {
    const Lanes v = numbers(), before = numbers();
    Lanes out = before;
    set().shift_right(v.data(), bits, out.data());
    expect_lanes(out, before, [&](int i) { return v[i] >> bits; });
  }
}

TEST_P(Sets, FindTheLowest) {
  for (int round = 0; round < kRounds; ++round) {
    const Lanes v = numbers();
    EXPECT_EQ(set().lowest_of(v.data()), *std::min_element(v.begin(), v.begin() + lanes())) << name();
  }
}

TEST_P(Sets, PackEverySetOfLanes) {
  for (unsigned bits = 0; bits < 1u << lanes(); ++bits) {
    const Lanes v = numbers();
    std::array<int, 2 * kMostLanes> out;
    set().append(bits, v.data(), out.data());
    for (int i = 0, n = 0; i < lanes(); ++i) {
      if (bits >> i & 1) ASSERT_EQ(out[n++], v[i]) << name() << ", lanes " << std::hex << bits;
    }
  }
}

TEST_P(Sets, PutNumbersTogether) {
  for (int round = 0; round < kRounds; ++round) {
    std::array<uint16_t, 8> eight, eight_out;
    std::array<uint32_t, 4> four, four_out;
    for (auto& n : eight) n = static_cast<uint16_t>(random_());
    for (auto& n : four) n = static_cast<uint32_t>(number());
    set().put_together_16(eight.data(), eight_out.data());
    set().put_together_32(four.data(), four_out.data());
    ASSERT_EQ(eight_out, eight) << name();
    ASSERT_EQ(four_out, four) << name();
    std::array<uint8_t, 64> bytes, stored;
    for (auto& byte : bytes) byte = static_cast<uint8_t>(random_());
    set().store_64(bytes.data(), stored.data());
    ASSERT_EQ(stored, bytes) << name();
    stored.fill(0);
    set().store_32(bytes.data(), stored.data());
    ASSERT_TRUE(std::equal(stored.begin(), stored.begin() + 32, bytes.begin())) << name();
    ASSERT_EQ(std::count(stored.begin() + 32, stored.end(), 0), 32) << name();
  }
}

TEST_P(Sets, KnowWhatIsConsecutive) {
  for (int first : {INT_MIN, -4, 0, 1000, INT_MAX - 7}) {
    std::array<int, 8> number;
    for (int i = 0; i < 8; ++i) number[i] = first + i;
    EXPECT_TRUE(set().consecutive_8(number.data())) << name();
    for (int i = 0; i < 8; ++i) {
      std::array<int, 8> other = number;
      other[i] ^= 1;
      EXPECT_FALSE(set().consecutive_8(other.data())) << name() << ", number " << i;
    }
  }
}

TEST_P(Sets, LookAtBytes) {
  for (int round = 0; round < kRounds; ++round) {
    std::array<uint8_t, 16> flags, bytes;
    std::array<int16_t, 16> shorts;
    unsigned nonzero = 0;
    for (int i = 0; i < 16; ++i) {
      flags[i] = static_cast<uint8_t>(random_() % 3 ? 0 : random_());
      shorts[i] = static_cast<int16_t>(random_() % 2 ? number() : random_() % 300);
      nonzero |= unsigned{flags[i] != 0} << i;
    }
    EXPECT_EQ(set().nonzero_bytes(flags.data()), nonzero) << name();
    set().packed_bytes(shorts.data(), bytes.data());
    for (int i = 0; i < 16; ++i) ASSERT_EQ(bytes[i], std::clamp<int>(shorts[i], 0, 255)) << name();
  }
}

// Toward zero; 0x80000000 for what does not fit.
int truncated(double v) { return v > -2147483649.0 && v < 2147483648.0 ? static_cast<int>(v) : INT_MIN; }

TEST_P(Sets, TruncateDoubles) {
  static constexpr double kDoubles[] = {
      0.0,   -0.0, 0.5,         -0.5,          1.5,          -1.5,         -2.999999, 1e9 + 0.75,
      -1e10, 1e10, 2147483647., 2147483647.75, 2147483648.0, -2147483648., NAN,       INFINITY};
  for (std::size_t first = 0; first < std::size(kDoubles); first += set().doubles) {
    std::array<int, 8> out;
    set().truncate_vector(kDoubles + first, out.data());
    for (int i = 0; i < set().doubles; ++i) {
      EXPECT_EQ(out[i], truncated(kDoubles[first + i])) << name();
      EXPECT_EQ(set().truncate(kDoubles[first + i]), truncated(kDoubles[first + i])) << name();
    }
  }
}

TEST_P(Sets, TruncateProducts) {
  for (int round = 0; round < kRounds; ++round) {
    std::array<int16_t, 8> value, out;
    for (auto& v : value) v = static_cast<int16_t>(number());
    const double slope = (static_cast<int>(random_() % 2001) - 1000) / 256.0;
    const double offset = (static_cast<int>(random_() % 200001) - 100000) / 3.0;
    set().truncate_products(value.data(), slope, offset, out.data());
    for (int i = 0; i < 8; ++i) {
      const int expected = std::clamp(truncated(value[i] * slope + offset), INT16_MIN, INT16_MAX);
      ASSERT_EQ(out[i], expected) << name() << ", " << value[i] << " * " << slope << " + " << offset;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(, Sets, testing::ValuesIn(kSets),
                         [](const auto& info) { return std::string(info.param.operations.name); });

}  // namespace
}  // namespace zox_test
