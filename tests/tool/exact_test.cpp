// Pictures in which nothing is rounded on the way to a sample: viewed along an axis, half a voxel from
// pixel to pixel, samples in planes of voxels, values that stay whole when they are interpolated. Every way
// of holding and sampling the volume must then give the one right picture.
#include <gtest/gtest.h>

#include <cmath>

#include "expected.h"
#include "picture.h"
#include "run.h"

namespace {

struct Choice {
  const char* name;
  bool bytes, nearest;
  const char* how;  // further options
  double azimuth;
  const char* view;
  Reduction reduction = Reduction::kMax;
  const char* reduction_name = "max";
};
std::ostream& operator<<(std::ostream& out, const Choice& choice) { return out << choice.name; }

// A sample in a border plane may count or not: there stands what never wins.
double border_of(const Choice& choice) {
  if (choice.reduction == Reduction::kMin) return choice.bytes ? 240 : 112;
  if (choice.reduction == Reduction::kAbsMax) return 0;
  return choice.bytes ? 0 : -112;
}

// Odd sizes: the middle of the volume is a voxel's centre, and so are samples a whole step away.
TestVolume volume_for(const Choice& choice) {
  return choice.bytes ? coarse_volume({13, 13, 11}, 0, 240, 16, border_of(choice), 1)
                      : coarse_volume({13, 13, 11}, -112, 112, 16, border_of(choice), 2);
}

class ExactTest : public ToolTest, public testing::WithParamInterface<Choice> {
 protected:
  void show(const Choice& choice, const TestVolume& volume, const std::string& more) const {
    write_text(path("v.nrrd"), choice.bytes ? nrrd(volume, "uchar", raw_bytes<uint8_t>(volume))
                                            : nrrd(volume, "short", raw_bytes<int16_t>(volume)));
    const Outcome outcome =
        run("v.nrrd -o p.png --projection orthographic --step 1 --size 26x22 --quiet --view " +
            std::string(choice.view) + " --interpolation " + (choice.nearest ? "nearest" : "trilinear") +
            " --reduction " + choice.reduction_name + " " + choice.how + " " + more);
    ASSERT_EQ(outcome.status, 0) << outcome.err;
  }
};

Scene scene_for(const Choice& choice) {
  Scene scene;
  scene.azimuth = choice.azimuth;
  scene.nearest = choice.nearest;
  scene.width = 26;
  scene.height = 22;
  scene.step = 1;
  scene.reduction = choice.reduction;
  return scene;
}

// A window that keeps every value apart from the next: a grey level for each.
TEST_P(ExactTest, MatchesTheOnlyRightPicture) {
  const Choice choice = GetParam();
  const TestVolume volume = volume_for(choice);
  const double center = choice.bytes ? 128 : 0;
  show(choice, volume, choice.bytes ? "--window 128,255" : "--window 0,255");
  const std::vector<double> values = expected_values(volume, scene_for(choice));
  const Picture picture = read_picture(path("p.png"));
  ASSERT_EQ(picture.grey.size(), values.size());
  for (size_t i = 0; i < values.size(); ++i)
    EXPECT_EQ(picture.grey[i], values[i] == kNoSample ? 0 : expected_grey(values[i], center, 255))
        << "pixel " << i % 26 << ", " << i / 26;
}

TEST_P(ExactTest, SkippingChangesNothing) {
  const Choice choice = GetParam();
  const TestVolume volume = volume_for(choice);
  show(choice, volume, "--raw r.npy --depth d.npy");
  const std::string picture = read_text(path("p.png"));
  const std::string raw = read_text(path("r.npy"));
  const std::string depth = read_text(path("d.npy"));
  show(choice, volume, "--raw r.npy --depth d.npy --no-skip");
  EXPECT_EQ(read_text(path("p.png")), picture);
  EXPECT_EQ(read_text(path("r.npy")), raw);
  EXPECT_EQ(read_text(path("d.npy")), depth);
}

// The numbers behind the picture: values, and where along the ray each lies.
TEST_P(ExactTest, TellsValuesAndDepths) {
  const Choice choice = GetParam();
  const TestVolume volume = volume_for(choice);
  show(choice, volume, "--raw r.nrrd --depth d.npy");
  const std::vector<ExpectedPixel> pixels = expected_pixels(volume, scene_for(choice));
  const SampleFile raw = read_samples(path("r.nrrd"));
  const std::vector<float> depths = read_floats(path("d.npy"));
  ASSERT_EQ(raw.values.size(), pixels.size());
  ASSERT_EQ(depths.size(), pixels.size());
  for (size_t i = 0; i < pixels.size(); ++i) {
    if (pixels[i].value == kNoSample) {
      EXPECT_TRUE(std::isnan(raw.values[i]) && std::isnan(depths[i])) << "pixel " << i;
      continue;
    }
    EXPECT_EQ(raw.values[i], pixels[i].value) << "pixel " << i;
    if (pixels[i].value != border_of(choice)) {
      EXPECT_EQ(depths[i], pixels[i].depth) << "pixel " << i;
    }
  }
}

constexpr Choice kChoices[] = {
    {"BytesNearestBlocked", true, true, "--layout blocked", 0, "anterior"},
    {"BytesNearestStack", true, true, "--layout stack", 0, "front"},
    {"BytesFineBlocked", true, false, "--layout blocked --precision fine", 0, "anterior"},
    {"BytesFineStack", true, false, "--layout stack --precision fine", 0, "CORONAL"},
    {"BytesVoxelBlocked", true, false, "--layout blocked --precision voxel", 0, "Anterior"},
    {"BytesVoxelStack", true, false, "--layout stack --precision voxel", 0, "anterior"},
    {"ShortsNearestBlocked", false, true, "--layout blocked", 0, "anterior"},
    {"ShortsNearestStack", false, true, "--layout stack", 180, "back"},
    {"ShortsBlocked", false, false, "--layout blocked", 90, "left"},
    {"ShortsStack", false, false, "--layout stack", 270, "right"},
    {"BytesFromTheRight", true, false, "", 270, "right"},
    {"ShortsFromBehind", false, true, "", 180, "posterior"},
    {"MinimumOfBytes", true, false, "", 0, "anterior", Reduction::kMin, "min"},
    {"MinimumOfBytesNearest", true, true, "--layout blocked", 0, "anterior", Reduction::kMin, "min"},
    {"MinimumOfShorts", false, false, "--layout blocked", 90, "sagittal", Reduction::kMin, "min"},
    {"MinimumOfShortsNearest", false, true, "--layout stack", 0, "anterior", Reduction::kMin, "min"},
    {"LargestMagnitude", false, false, "", 0, "anterior", Reduction::kAbsMax, "absmax"},
    {"LargestMagnitudeNearest", false, true, "--layout blocked", 90, "left", Reduction::kAbsMax, "absmax"},
    {"LargestMagnitudeStack", false, false, "--layout stack", 180, "back", Reduction::kAbsMax, "absmax"}};
INSTANTIATE_TEST_SUITE_P(Ways, ExactTest, testing::ValuesIn(kChoices),
                         [](const auto& choice) { return std::string(choice.param.name); });

// Where all values along a ray are the same, so is their mean, however many of them count.
TEST_F(ToolTest, MeanOfColumns) {
  TestVolume volume = coarse_volume({13, 13, 11}, -112, 112, 16, -112, 5);
  for (int z = 0; z < 11; ++z)
    for (int i = 0; i < 13 * 13; ++i)
      volume.values[static_cast<size_t>(z * 169 + i)] = volume.at(i % 13, 6, z);
  write_text(path("v.nrrd"), nrrd(volume, "short", raw_bytes<int16_t>(volume)));
  Scene scene;
  scene.width = 26;
  scene.height = 22;
  scene.step = 1;
  scene.reduction = Reduction::kMean;
  for (const bool nearest : {false, true}) {
    scene.nearest = nearest;
    const Outcome outcome =
        run("v.nrrd -o p.png --projection orthographic --step 1 --size 26x22 --quiet --reduction mean "
            "--window 0,255 --interpolation " +
            std::string(nearest ? "nearest" : "trilinear"));
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const std::vector<double> values = expected_values(volume, scene);
    const Picture picture = read_picture(path("p.png"));
    for (size_t i = 0; i < values.size(); ++i)
      EXPECT_EQ(picture.grey[i], values[i] == kNoSample ? 0 : expected_grey(values[i], 0, 255)) << i;
  }
}

}  // namespace
