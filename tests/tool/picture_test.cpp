// Pictures from any side, compared with the independent computation within stated bounds.
#include "picture.h"

#include <gtest/gtest.h>

#include <cmath>

#include "expected.h"
#include "run.h"

namespace {

// Bytes are shown one grey level apart. The picture may be darker than the real-valued maximum by
// less than one level for the truncated sample and less than one for the truncated grey level.
constexpr int kCenter = 128;
constexpr int kWidth = 255;

double real_grey(double value) { return std::clamp(value - 0.5, 0.0, 255.0); }

struct Bounds {
  double darker;
  double brighter;
};
// Positions in doubles: the rest is rounding in the last bits, here and there.
constexpr Bounds kDouble = {2.001, 0.001};
// Positions in fixed point drift by at most 1.5 units of 2^-20 a sample: over 150 samples less than
// 0.00022 voxel on each axis, so that a sample between voxels up to 255 apart changes by less than
// 3 * 0.00022 * 255 = 0.17. Weights of 10 bits on y and z add up to 2 * 255 / 1024 = 0.5, darker or brighter.
constexpr Bounds kFixedPoint = {2.001 + 0.67, 0.001 + 0.67};

class PictureTest : public ToolTest {
 protected:
  // A lying, oblique, anisotropic volume: its axes are right-handed but none is the patient's.
  static TestVolume tilted() {
    TestVolume volume = random_volume({24, 17, 20}, 0, 255, 3);
    const double c = std::cos(0.3);
    const double s = std::sin(0.3);
    volume.axes = {{{0, 0.8 * c, 0.8 * s}, {0, -1.7 * s, 1.7 * c}, {1.1, 0, 0}}};
    return volume;
  }

  Picture show(const TestVolume& volume, const Scene& scene, const std::string& more = "--window 128,255") {
    write_text(path("v.nrrd"), nrrd(volume, "uchar", raw_bytes<uint8_t>(volume)));
    const Outcome outcome =
        run("v.nrrd -o p.png --quiet --size " + std::to_string(scene.width) + "x" +
            std::to_string(scene.height) + " --step " + std::to_string(scene.step) + " --view " +
            std::to_string(scene.azimuth) + "," + std::to_string(scene.elevation) + " --projection " +
            (scene.perspective ? "perspective" : "orthographic") + " --interpolation " +
            (scene.nearest ? "nearest" : "trilinear") + " --layout " + (scene.stack ? "stack " : "blocked ") +
            more);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return read_picture(path("p.png"));
  }

  void compare(const TestVolume& volume, const Scene& scene, const Bounds& bounds,
               const std::string& more = "") {
    const Picture picture = show(volume, scene, "--window 128,255 " + more);
    const std::vector<double> maxima = expected_maxima(volume, scene);
    ASSERT_EQ(picture.grey.size(), maxima.size());
    int seen = 0;
    for (size_t i = 0; i < maxima.size(); ++i) {
      seen += maxima[i] > 0;
      EXPECT_GT(picture.grey[i], real_grey(maxima[i]) - bounds.darker) << "pixel " << i;
      EXPECT_LT(picture.grey[i], real_grey(maxima[i]) + bounds.brighter) << "pixel " << i;
    }
    EXPECT_GT(seen, static_cast<int>(maxima.size()) / 4);
  }
};

Scene scene_from(double azimuth, double elevation, bool perspective, bool stack) {
  Scene scene;
  scene.azimuth = azimuth;
  scene.elevation = elevation;
  scene.perspective = perspective;
  scene.stack = stack;
  scene.width = 57;  // neither a multiple of the tiles nor square
  scene.height = 50;
  return scene;
}

TEST_F(PictureTest, PerspectiveBlocked) { compare(tilted(), scene_from(25, 35, true, false), kDouble); }
TEST_F(PictureTest, PerspectiveStack) { compare(tilted(), scene_from(205, -15, true, true), kFixedPoint); }
TEST_F(PictureTest, OrthographicBlocked) {
  compare(tilted(), scene_from(-70, 10, false, false), kFixedPoint);
}
TEST_F(PictureTest, OrthographicStack) { compare(tilted(), scene_from(130, 60, false, true), kFixedPoint); }
TEST_F(PictureTest, FromAbove) { compare(tilted(), scene_from(180, 90, true, false), kDouble); }

TEST_F(PictureTest, DepthRangeBlocked) {
  Scene scene = scene_from(40, 20, true, false);
  scene.near = -3.1;
  scene.far = 4.3;
  compare(tilted(), scene, kDouble, "--depth-range -3.1,4.3");
}

TEST_F(PictureTest, DepthRangeStack) {
  Scene scene = scene_from(10, 0, false, true);
  scene.near = 1.05;
  scene.far = 9.95;
  compare(tilted(), scene, kFixedPoint, "--depth-range 1.05,9.95");
}

// Not even the grey that 0 has in this window is left where no sample counts.
TEST_F(PictureTest, DepthRangeBeyondTheVolumeIsBlack) {
  const Picture picture =
      show(tilted(), scene_from(10, 0, false, false), "--depth-range 500,600 --window 0,200");
  EXPECT_EQ(std::count(picture.grey.begin(), picture.grey.end(), 0), std::ssize(picture.grey));
}

// A nearest sample may fall on the other side of a voxel's border after drifting by up to 0.0002 voxel
// on each of three axes. One pixel's largest sample does so with a chance near 0.0006 (a side on either
// hand counts double, and other samples may take its place): of 2850 pixels, two or three.
TEST_F(PictureTest, NearestFromAnySideButForFewPixels) {
  for (const bool perspective : {false, true})
    for (const bool stack : {false, true}) {
      Scene scene = scene_from(33, 21, perspective, stack);
      scene.nearest = true;
      const TestVolume volume = tilted();
      const Picture picture = show(volume, scene);
      const std::vector<double> maxima = expected_maxima(volume, scene);
      int different = 0;
      for (size_t i = 0; i < maxima.size(); ++i)
        different +=
            picture.grey[i] != (maxima[i] == kNoSample ? 0 : expected_grey(maxima[i], kCenter, kWidth));
      EXPECT_LE(different, 15) << "perspective " << perspective << ", stack " << stack;
    }
}

// A bright voxel to the patient's left, to the front and above; NIfTI counts to the right, to the
// front and up, NRRD here to the left, to the back and up.
TEST_F(PictureTest, SidesOfThePatientAreRight) {
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
  const Side sides[] = {{"anterior", 6, 2}, {"posterior", 2, 2}, {"left", 1, 2},
                        {"right", 7, 2},    {"superior", 2, 1},  {"inferior", 6, 1}};
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
