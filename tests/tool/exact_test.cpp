// Pictures in which nothing is rounded on the way to a sample: viewed along an axis, half a voxel from
// pixel to pixel, samples in planes of voxels. Every operation must then give the one right picture.
#include <gtest/gtest.h>

#include <cmath>

#include "expected.h"
#include "picture.h"
#include "run.h"

namespace {

struct Choice {
  bool bytes, nearest, stack;
  double azimuth;
  const char* view;
};

class ExactTest : public ToolTest, public testing::WithParamInterface<Choice> {};

// Windows that keep every value apart from the next: a grey level for each.
constexpr int kWidth = 255;
constexpr int kCenterOfBytes = 128;
constexpr int kCenterOfShorts = 0;

TEST_P(ExactTest, MatchesTheOnlyRightPicture) {
  const Choice choice = GetParam();
  // Odd sizes: the middle of the volume is a voxel's centre, and so are samples a whole step away.
  const TestVolume volume =
      choice.bytes ? random_volume({13, 13, 11}, 0, 255, 1) : random_volume({13, 13, 11}, -120, 120, 2);
  write_text(path("v.nrrd"), choice.bytes ? nrrd(volume, "uchar", raw_bytes<uint8_t>(volume))
                                          : nrrd(volume, "short", raw_bytes<int16_t>(volume)));
  const int center = choice.bytes ? kCenterOfBytes : kCenterOfShorts;
  const Outcome outcome =
      run("v.nrrd -o p.png --projection orthographic --step 1 --size 26x22 --quiet --view " +
          std::string(choice.view) + " --interpolation " + (choice.nearest ? "nearest" : "trilinear") +
          " --layout " + (choice.stack ? "stack" : "blocked") + " --window " + std::to_string(center) + "," +
          std::to_string(kWidth));
  ASSERT_EQ(outcome.status, 0) << outcome.err;

  Scene scene;
  scene.azimuth = choice.azimuth;
  scene.nearest = choice.nearest;
  scene.stack = choice.stack;
  scene.width = 26;
  scene.height = 22;
  scene.step = 1;
  const std::vector<double> maxima = expected_maxima(volume, scene);
  const Picture picture = read_picture(path("p.png"));
  ASSERT_EQ(picture.grey.size(), maxima.size());
  for (size_t i = 0; i < maxima.size(); ++i)
    // Bytes are floored, shorts truncated toward zero; both leave the order of samples alone. The
    // independent computation may err in its last bits, the quarters that it means do not.
    EXPECT_EQ(picture.grey[i],
              maxima[i] == kNoSample
                  ? 0
                  : expected_grey(std::trunc(std::round(maxima[i] * 64) / 64), center, kWidth))
        << "pixel " << i % 26 << ", " << i / 26;
}

INSTANTIATE_TEST_SUITE_P(
    Operations, ExactTest,
    testing::Values(Choice{true, true, false, 0, "anterior"}, Choice{true, false, false, 0, "anterior"},
                    Choice{true, true, true, 0, "anterior"}, Choice{true, false, true, 0, "anterior"},
                    Choice{false, true, false, 0, "anterior"}, Choice{false, false, false, 0, "anterior"},
                    Choice{false, true, true, 0, "anterior"}, Choice{false, false, true, 0, "anterior"},
                    Choice{true, true, false, 270, "right"}, Choice{true, false, true, 270, "right"},
                    Choice{false, false, false, 90, "left"}, Choice{false, true, true, 180, "posterior"}));

}  // namespace
