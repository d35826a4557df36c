// Arrays that make no sense: each is refused with a status and a sentence.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "library.h"
#include "refused.h"

using namespace zox_test;

namespace {

struct BadArray {
  const char* name;
  std::function<void(zox_render_array&)> spoil;
};
void PrintTo(const BadArray& bad, std::ostream* out) { *out << bad.name; }

class RefusedArray : public testing::TestWithParam<BadArray> {};

TEST_P(RefusedArray, IsABadArgument) {
  const auto scene = good_scene();
  GetParam().spoil(scene->array);
  for (const int layout : {ZOX_RENDER_AUTO, ZOX_RENDER_BRICKS, ZOX_RENDER_STACK}) {
    const zox_render_volume_options options = options_of(layout);
    zox_render_volume* volume = nullptr;
    EXPECT_EQ(zox_render_volume_create(&scene->array, &options, nullptr, &volume), ZOX_RENDER_BAD_ARGUMENT);
    expect_sentence(GetParam().name);
  }
}

const double kPositions[] = {0, 1, 2, 2, 3, 4};
const void* const kNullSlices[6] = {};

const BadArray kBadArrays[] = {
    {"no_record_size", [](auto& a) { a.record_size = 0; }},
    {"short_record", [](auto& a) { a.record_size = 8; }},
    {"type_0", [](auto& a) { a.type = 0; }},
    {"type_9", [](auto& a) { a.type = 9; }},
    {"type_minus_1", [](auto& a) { a.type = -1; }},
    {"no_columns", [](auto& a) { a.size[0] = 0; }},
    {"negative_rows", [](auto& a) { a.size[1] = -5; }},
    {"too_many_slices", [](auto& a) { a.size[2] = 2049; }},
    {"most_columns_there_are", [](auto& a) { a.size[0] = std::numeric_limits<int32_t>::max(); }},
    {"no_data", [](auto& a) { a.data = nullptr; }},
    {"slices_that_are_null", [](auto& a) { a.data = nullptr, a.slices = kNullSlices; }},
    {"axis_of_zero", [](auto& a) { a.axes[0][0] = 0; }},
    {"axis_not_a_number", [](auto& a) { a.axes[1][1] = kNaN; }},
    {"axis_infinite", [](auto& a) { a.axes[2][0] = kInfinity; }},
    {"coplanar_axes", [](auto& a) { a.axes[2][0] = 1, a.axes[2][1] = 1, a.axes[2][2] = 0; }},
    {"origin_not_a_number", [](auto& a) { a.origin[2] = kNaN; }},
    {"origin_infinite", [](auto& a) { a.origin[0] = -kInfinity; }},
    {"positions_twice_the_same", [](auto& a) { a.positions = kPositions; }},
    {"slope_0", [](auto& a) { a.slope = 0; }},
    {"slope_not_a_number", [](auto& a) { a.slope = kNaN; }},
    {"slope_infinite", [](auto& a) { a.slope = kInfinity; }},
    {"intercept_not_a_number", [](auto& a) { a.intercept = kNaN; }},
    {"part_outside_of_the_whole", [](auto& a) { a.whole_size[0] = a.whole_size[1] = a.whole_size[2] = 3; }},
    {"part_that_begins_before_the_whole",
     [](auto& a) {
       a.whole_size[0] = a.whole_size[1] = a.whole_size[2] = 50;
       a.first[0] = -1;
       for (int i = 0; i < 3; ++i) a.owned_size[i] = 2;
     }},
    {"part_that_owns_what_it_does_not_hold",
     [](auto& a) {
       a.whole_size[0] = a.whole_size[1] = a.whole_size[2] = 50;
       for (int i = 0; i < 3; ++i) a.owned_size[i] = 30;
     }},
    {"lowest_above_highest", [](auto& a) { a.lowest = 5, a.highest = 2; }},
    {"lowest_not_a_number", [](auto& a) { a.lowest = kNaN, a.highest = 2; }},
};
INSTANTIATE_TEST_SUITE_P(, RefusedArray, testing::ValuesIn(kBadArrays),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
