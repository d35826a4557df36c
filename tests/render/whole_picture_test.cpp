// Whole pictures of random volumes, every pixel beside the plain renderer: each way of keeping the
// volume, of looking, of interpolating and of reducing, for each type of voxels.
#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "effort.h"
#include "library.h"

using namespace zox_test;

namespace {

struct Choice {
  int value;
  const char* name;
};
void PrintTo(const Choice& choice, std::ostream* out) { *out << choice.name; }

const Choice kLayouts[] = {{ZOX_RENDER_BRICKS, "bricks"}, {ZOX_RENDER_STACK, "stack"}};
const Choice kProjections[] = {{ZOX_RENDER_PERSPECTIVE, "perspective"},
                               {ZOX_RENDER_ORTHOGRAPHIC, "orthographic"}};
const Choice kInterpolations[] = {{ZOX_RENDER_TRILINEAR, "trilinear"}, {ZOX_RENDER_NEAREST, "nearest"}};
const Choice kReductions[] = {{ZOX_RENDER_MAXIMUM, "max"},
                              {ZOX_RENDER_MINIMUM, "min"},
                              {ZOX_RENDER_MEAN, "mean"},
                              {ZOX_RENDER_LARGEST_MAGNITUDE, "absmax"}};
const Choice kTypes[] = {{ZOX_RENDER_UINT8, "uint8"},   {ZOX_RENDER_INT16, "int16"},
                         {ZOX_RENDER_UINT16, "uint16"}, {ZOX_RENDER_INT32, "int32"},
                         {ZOX_RENDER_UINT32, "uint32"}, {ZOX_RENDER_FLOAT32, "float32"},
                         {ZOX_RENDER_INT8, "int8"},     {ZOX_RENDER_FLOAT64, "float64"}};

using Ways = std::tuple<Choice, Choice, Choice, Choice>;

class Pictures : public testing::TestWithParam<Ways> {
 protected:
  void compare(int type, int precision, uint64_t seed) {
    Random random(seed);
    const auto& [layout, projection, interpolation, reduction] = GetParam();
    const auto scene = random_scene(random, type, 24);
    zox_render_view view = random_view(random, 28);
    view.projection = projection.value;
    view.interpolation = interpolation.value;
    view.reduction = reduction.value;
    const Volume volume = make_volume(*scene, layout.value, precision);
    compare_with_plain(*scene, volume, view, &pixels_);
  }
  int64_t pixels_ = 0;
};

std::string name_of(const testing::TestParamInfo<Ways>& info) {
  const auto& [layout, projection, interpolation, reduction] = info.param;
  return std::string(layout.name) + "_" + projection.name + "_" + interpolation.name + "_" + reduction.name;
}

TEST_P(Pictures, AreThePlainRenderers) {
  const Seeds seeds = zox_test::seeds(1, 3);
  for (const Choice& type : kTypes)
    for (uint64_t seed = seeds.first; seed < seeds.first + seeds.count; ++seed) {
      SCOPED_TRACE(std::string(type.name) + ", ZOX_TEST_SEED=" + std::to_string(seed));
      compare(type.value, ZOX_RENDER_PRECISION_AUTO, seed);
      if (HasFailure()) return;
    }
  EXPECT_GT(pixels_, 0);
}

TEST_P(Pictures, AreThePlainRenderersInBothPrecisions) {
  const Seeds seeds = zox_test::seeds(1000, 3);
  for (const int type : {ZOX_RENDER_UINT8, ZOX_RENDER_INT8})
    for (const int precision : {ZOX_RENDER_PRECISION_VOXEL, ZOX_RENDER_PRECISION_FINE})
      for (uint64_t seed = seeds.first; seed < seeds.first + seeds.count; ++seed) {
        SCOPED_TRACE(std::string(traits_of(type).name) + ", precision " + std::to_string(precision) +
                     ", ZOX_TEST_SEED=" + std::to_string(seed));
        compare(type, precision, seed);
        if (HasFailure()) return;
      }
  EXPECT_GT(pixels_, 0);
}

INSTANTIATE_TEST_SUITE_P(, Pictures,
                         testing::Combine(testing::ValuesIn(kLayouts), testing::ValuesIn(kProjections),
                                          testing::ValuesIn(kInterpolations), testing::ValuesIn(kReductions)),
                         name_of);

}  // namespace
