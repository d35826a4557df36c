// Window and level: 16-bit values to display bytes.
#include <climits>
#include <cstring>

#include "cases.h"

namespace zox_test {
namespace {

struct Window {
  int center, width, outmin, outmax;
};

constexpr uint8_t kUntouched = 77;

class WindowLevel : public OperationsTest {
 protected:
  int convert(const std::vector<int16_t>& values, Window w, std::vector<uint8_t>& out, int len) {
    out.assign(values.size(), kUntouched);
    return operations().window_level_16s_8u(values.data(), out.data(), len, w.center, w.width, w.outmin,
                                            w.outmax);
  }

  // One value after another, and all at once often enough to fill vectors of any width.
  void expect(Window window, const std::vector<std::pair<int16_t, int>>& mapping) {
    std::vector<int16_t> many;
    std::vector<uint8_t> out;
    for (auto [value, expected] : mapping) {
      EXPECT_EQ(convert({value}, window, out, 1), ZOX_STS_NO_ERROR);
      EXPECT_EQ(out[0], expected) << "value " << value;
    }
    for (size_t i = 0; i < 83; ++i) many.push_back(mapping[i % mapping.size()].first);
    EXPECT_EQ(convert(many, window, out, 83), ZOX_STS_NO_ERROR);
    for (size_t i = 0; i < 83; ++i) {
      EXPECT_EQ(out[i], mapping[i % mapping.size()].second) << "value " << many[i] << " at " << i;
    }
  }

  void expect_refused(Window window) {
    const std::vector<int16_t> values(40, 5);
    std::vector<uint8_t> out;
    for (int len : {40, 1, 0, -1}) {  // the window is judged before the length
      EXPECT_EQ(convert(values, window, out, len), ZOX_STS_BAD_PARAM);
      EXPECT_EQ(out, std::vector<uint8_t>(40, kUntouched));
    }
  }
};

TEST_P(WindowLevel, MapsInsideAndCutsOffOutside) {
  // Slope 5.1, offset -382.5: 76 gives 5.1, 100 gives 127.5, 124 gives 249.9.
  expect({100, 50, 0, 255}, {{75, 0}, {76, 5}, {100, 127}, {124, 249}, {125, 255}, {-300, 0}, {3000, 255}});
}

TEST_P(WindowLevel, WidthTwoIsTheNarrowest) {
  expect({0, 2, 10, 20}, {{-1, 10}, {0, 15}, {1, 20}});
  expect_refused({0, 1, 10, 20});
}

TEST_P(WindowLevel, RefusesWidthsBelowOne) {
  expect_refused({0, 0, 10, 20});
  expect_refused({0, -5, 10, 20});
}

TEST_P(WindowLevel, RefusesAnOutputRangeThatFalls) {
  expect_refused({0, 100, 20, 19});
  expect({0, 100, 7, 7}, {{-32768, 7}, {-20, 7}, {0, 7}, {32767, 7}});
}

TEST_P(WindowLevel, TheWindowMayReachTheEndsOfTheRangeAndNotBeyond) {
  expect_refused({32767, 4, 0, 255});   // hi = 32768
  expect_refused({-32768, 4, 0, 255});  // lo = -32769
  // hi = 32767: slope 63.75 from 0 at 32764; 32766 gives 127.5, 32767 gives 191.25.
  expect({32766, 4, 0, 255}, {{32767, 191}, {32766, 127}, {32764, 0}, {-32768, 0}});
  // lo = -32768: slope 127.5 from 0 at -32769; -32768 gives 127.5.
  expect({-32768, 2, 0, 255}, {{-32768, 127}, {-32767, 255}, {32767, 255}});
}

// 2c - w = -9 and 2c + w = -3 are halved toward minus infinity, so that lo = -4 and hi = -3.
// Slope 10/3, offset 25: -4 gives 11.67 and -3 gives 15.
TEST_P(WindowLevel, EdgesAreHalvedDownward) {
  expect({-3, 3, 10, 20}, {{-5, 10}, {-4, 11}, {-3, 15}, {-2, 20}});
}

// The whole range is a window too: slope 255/32767 from 0 at -16383.5.
TEST_P(WindowLevel, ExtremeValuesDoNotOverflow) {
  expect({0, 32767, 0, 255}, {{-32768, 0}, {-16384, 0}, {0, 127}, {16384, 255}, {32767, 255}});
  expect({-32000, 2, 1, 2}, {{-32768, 1}, {-32001, 1}, {-31999, 2}, {32767, 2}});
  expect({32000, 2, 1, 2}, {{-32768, 1}, {31999, 1}, {32001, 2}, {32767, 2}});
}

// Slope and offset as doubles put 40 just below 130 and just below 50. The reciprocal of the width
// and a fused product and sum both give 130 and 50.
TEST_P(WindowLevel, SlopeIsOneDivisionAndTheProductIsRounded) {
  expect({40, 13, 10, 250}, {{40, 129}});
  expect({40, 26, 0, 100}, {{40, 49}});
}

TEST_P(WindowLevel, OnlyTheLowBitsOfNarrowArgumentsCount) {
  const Window window = {100 + 0x50000, 50 - 0x70000, 0x300, 0xFF + 0x7FFF0100};
  expect(window, {{75, 0}, {76, 5}, {100, 127}, {124, 249}, {125, 255}});
  expect_refused({0, 0x10000, 0, 255});      // the width is 0
  expect_refused({0, 0x8000, 0, 255});       // the width is -32768
  expect_refused({0, 100, 20, 0x100 + 19});  // the range falls
  // The centre is -100: -100 - 25 maps to 0 with slope 5.1.
  expect({0xFF9C, 50, 0, 255}, {{-124, 5}, {-100, 127}});
}

TEST_P(WindowLevel, NoValuesAreNoError) {
  std::vector<uint8_t> out;
  for (int len : {0, -1, INT_MIN}) {
    EXPECT_EQ(convert({1, 2, 3}, {100, 50, 0, 255}, out, len), ZOX_STS_NO_ERROR);
    EXPECT_EQ(out, std::vector<uint8_t>(3, kUntouched));
  }
}

TEST_P(WindowLevel, ConvertsInPlace) {
  for (int len : {1, 15, 16, 40, 200}) {
    std::vector<int16_t> row;
    for (int i = 0; i < len; ++i) row.push_back(static_cast<int16_t>(75 + i % 51));
    std::vector<uint8_t> apart;
    ASSERT_EQ(convert(row, {100, 50, 0, 255}, apart, len), ZOX_STS_NO_ERROR);
    uint8_t* bytes = reinterpret_cast<uint8_t*>(row.data());
    ASSERT_EQ(operations().window_level_16s_8u(row.data(), bytes, len, 100, 50, 0, 255), ZOX_STS_NO_ERROR);
    EXPECT_EQ(std::vector<uint8_t>(bytes, bytes + len), apart) << "length " << len;
  }
}

INSTANTIATE_FOR_OPERATIONS(WindowLevel);

}  // namespace
}  // namespace zox_test
