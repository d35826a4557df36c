// Pictures from any side, compared with the independent computation within stated bounds.
#include "picture.h"

#include <gtest/gtest.h>

#include <cmath>

#include "expected.h"
#include "run.h"

namespace {

// Bytes are shown one grey level apart.
double real_grey(double value) { return std::clamp(value - 0.5, 0.0, 255.0); }

// A start and a step lie on a grid of 2^-20 voxel: over 150 samples a position strays by less than
// 151 / 2^21 = 0.00008 voxel on each axis, so that a sample between voxels up to 255 apart changes by less
// than 3 * 0.00008 * 255 = 0.07. Weights of 10 bits on two axes add up to 2 * 255 / 1024 = 0.5, darker or
// brighter.
constexpr double kPosition = 0.57;
// Truncating the sample makes it darker by less than one, truncating the grey level by less than another.
constexpr double kTruncated = 2;

struct Look {
  const char* name;
  double azimuth, elevation;
  bool perspective, nearest;
  const char* how;
  double near = -std::numeric_limits<double>::infinity();
  double far = std::numeric_limits<double>::infinity();
};
std::ostream& operator<<(std::ostream& out, const Look& look) { return out << look.name; }

// A lying, oblique, anisotropic volume: its axes are right-handed but none is the patient's.
TestVolume tilted() {
  TestVolume volume = random_volume({24, 17, 20}, 0, 255, 3);
  const double c = std::cos(0.3);
  const double s = std::sin(0.3);
  volume.axes = {{{0, 0.8 * c, 0.8 * s}, {0, -1.7 * s, 1.7 * c}, {1.1, 0, 0}}};
  return volume;
}

Scene scene_of(const Look& look) {
  Scene scene;
  scene.azimuth = look.azimuth;
  scene.elevation = look.elevation;
  scene.perspective = look.perspective;
  scene.nearest = look.nearest;
  scene.near = look.near;
  scene.far = look.far;
  scene.width = 57;  // neither a multiple of the tiles nor square
  scene.height = 50;
  return scene;
}

class PictureTest : public ToolTest, public testing::WithParamInterface<Look> {
 protected:
  Picture show(const Look& look) {
    const TestVolume volume = tilted();
    write_text(path("v.nrrd"), nrrd(volume, "uchar", raw_bytes<uint8_t>(volume)));
    const Outcome outcome = run("v.nrrd -o p.png --quiet --size 57x50 --step 0.5 --window 128,255 --view " +
                                std::to_string(look.azimuth) + "," + std::to_string(look.elevation) +
                                " --projection " + (look.perspective ? "perspective" : "orthographic") +
                                " --interpolation " + (look.nearest ? "nearest " : "trilinear ") + look.how);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return read_picture(path("p.png"));
  }
};

TEST_P(PictureTest, MatchesTheComputation) {
  const Look look = GetParam();
  const Picture picture = show(look);
  const std::vector<double> maxima = expected_values(tilted(), scene_of(look));
  ASSERT_EQ(picture.grey.size(), maxima.size());
  int seen = 0;
  int different = 0;
  for (size_t i = 0; i < maxima.size(); ++i) {
    seen += maxima[i] > 0;
    if (look.nearest) {
      different += picture.grey[i] != (maxima[i] == kNoSample ? 0 : expected_grey(maxima[i], 128, 255));
      continue;
    }
    EXPECT_GT(picture.grey[i], real_grey(maxima[i]) - kTruncated - kPosition) << "pixel " << i;
    EXPECT_LT(picture.grey[i], real_grey(maxima[i]) + kPosition) << "pixel " << i;
  }
  EXPECT_GT(seen, static_cast<int>(maxima.size()) / 4);
  // A nearest sample may fall on the other side of a voxel's border after straying by 0.00008 voxel on each
  // of three axes. One pixel's largest sample does so with a chance near 0.0005: of 2850, one or two.
  EXPECT_LE(different, 10);
}

constexpr Look kLooks[] = {
    {"PerspectiveBlocked", 25, 35, true, false, "--layout blocked"},
    {"PerspectiveStack", 205, -15, true, false, "--layout stack"},
    {"PerspectiveVoxels", 205, -15, true, false, "--layout blocked --precision voxel"},
    {"OrthographicBlocked", -70, 10, false, false, "--layout blocked"},
    {"OrthographicStack", 130, 60, false, false, "--layout stack"},
    {"OrthographicVoxels", 130, 60, false, false, "--layout stack --precision voxel"},
    {"OrthographicFine", 130, 60, false, false, "--layout blocked --precision fine"},
    {"FromAbove", 180, 90, true, false, ""},
    {"DepthRangeBlocked", 40, 20, true, false, "--layout blocked --depth-range -3.1,4.3", -3.1, 4.3},
    {"DepthRangeStack", 10, 0, false, false, "--layout stack --depth-range 1.05,9.95", 1.05, 9.95},
    {"Slab", 10, 0, false, false, "--slab 6.3", -3.15, 3.15},
    {"NearestPerspectiveBlocked", 33, 21, true, true, "--layout blocked"},
    {"NearestPerspectiveStack", 33, 21, true, true, "--layout stack"},
    {"NearestOrthographicBlocked", 33, 21, false, true, "--layout blocked"},
    {"NearestOrthographicStack", 33, 21, false, true, "--layout stack"}};
INSTANTIATE_TEST_SUITE_P(Looks, PictureTest, testing::ValuesIn(kLooks),
                         [](const auto& look) { return std::string(look.param.name); });

// A bright voxel to the patient's left, to the front and above; NIfTI counts to the right, to the
// front and up, NRRD here to the left, to the back and up.
TEST_F(ToolTest, SidesOfThePatientAreRight) {
  TestVolume volume;
  volume.size = {9, 9, 9};
  volume.values.assign(729, 10);
  volume.axes = {{{-1, 0, 0}, {0, -1, 0}, {0, 0, 1}}};  // x to the right, y to the front
  volume.values[static_cast<size_t>(2 + 9 * 7 + 81 * 6)] = 200;
  write_text(path("v.nii"), nifti(volume));
  write_text(path("v.nrrd"), nrrd(volume, "uchar", raw_bytes<uint8_t>(volume)));
  struct Side {
    const char* view;
    int column, row;
  };
  // In voxels from the picture's left and top. Seen from the front, the patient's left is on the right;
  // voxel 2 of 0 .. 8 counted to the right is column 6 from the other side.
  const Side sides[] = {{"anterior", 6, 2}, {"posterior", 2, 2}, {"left", 1, 2},    {"right", 7, 2},
                        {"superior", 2, 1}, {"inferior", 6, 1},  {"Axial", 2, 1},   {"TOP", 2, 1},
                        {"bottom", 6, 1},   {"front", 6, 2},     {"coronal", 6, 2}, {"Back", 2, 2},
                        {"sagittal", 1, 2}};
  for (const char* file : {"v.nii", "v.nrrd"})
    for (const Side& side : sides) {
      const Outcome outcome =
          run(std::string(file) + " -o p.png --size 9x9 --projection orthographic --step 1 " +
              "--window 100,190 --interpolation nearest --quiet --view " + side.view);
      ASSERT_EQ(outcome.status, 0) << outcome.err;
      const Picture picture = read_picture(path("p.png"));
      for (int row = 0; row < 9; ++row)
        for (int column = 0; column < 9; ++column)
          EXPECT_EQ(picture.at(column, row) == 255, column == side.column && row == side.row)
              << file << ", " << side.view << ": column " << column << ", row " << row;
    }
}

}  // namespace
