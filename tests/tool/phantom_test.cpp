// The built-in phantom from end to end, and pictures that do not depend on the number of threads.
#include <gtest/gtest.h>

#include <cmath>

#include "expected.h"
#include "picture.h"
#include "run.h"

namespace {

// At most 1 inside an ellipsoid.
double distance(const Point& p, const Point& centre, const Point& radius) {
  return std::pow((p[0] - centre[0]) / radius[0], 2) + std::pow((p[1] - centre[1]) / radius[1], 2) +
         std::pow((p[2] - centre[2]) / radius[2], 2);
}

bool in_ellipsoid(const Point& p, const Point& centre, const Point& radius) {
  return distance(p, centre, radius) <= 1;
}

bool in_vessel(const Point& p, double phase) {
  const double angle = 2 * M_PI * p[2] / 54 + phase;
  return std::abs(p[2] - 6) <= 54 &&
         std::hypot(p[0] - 32 * std::cos(angle), p[1] - 32 * std::sin(angle)) <= 4;
}

// As docs/zox-mip.md describes the phantom, the last shape first.
double phantom_value(const Point& p) {
  if (in_vessel(p, 0)) return 1000;
  if (in_vessel(p, M_PI)) return 800;
  if (in_ellipsoid(p, {73, 10, -15}, {6, 6, 6})) return 1000;
  if (in_ellipsoid(p, {-28, -74, -10}, {14, 16, 12})) return 20;
  if (in_ellipsoid(p, {28, -74, -10}, {14, 16, 12})) return 20;
  const double brain = distance(p, {0, 4, 6}, {61, 74, 68});
  if (brain <= 1) return std::floor(100 + 500 * (1 - brain));
  if (in_ellipsoid(p, {0, 4, 6}, {67, 80, 74})) return 350;
  if (in_ellipsoid(p, {0, -86, -18}, {9, 9, 12})) return 40;
  if (in_ellipsoid(p, {0, 4, 0}, {74, 88, 84})) return 40;
  return -1000;
}

TestVolume phantom() {
  TestVolume volume;
  volume.size = {160, 192, 112};
  volume.axes = {{{1.2, 0, 0}, {0, 1, 0}, {0, 0, 1.6}}};
  for (int z = 0; z < 112; ++z)
    for (int y = 0; y < 192; ++y)
      for (int x = 0; x < 160; ++x)
        volume.values.push_back(phantom_value({(x - 79.5) * 1.2, y - 95.5, (z - 55.5) * 1.6}));
  return volume;
}

class PhantomTest : public ToolTest {
 protected:
  // A window 2000 wide shows 0.1275 grey levels for a step of the values. The picture is darker than the
  // real-valued maximum by less than that for the truncated sample and less than one for the truncated
  // level; negative samples, truncated upward, are black anyway. Positions are in doubles.
  void compare(const Scene& scene, const std::string& how) const {
    const Outcome outcome = run("--phantom -o p.png --size 72x64 --step 1 --window 500,2000 --quiet " + how);
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const std::vector<double> maxima = expected_values(phantom(), scene);
    const Picture picture = read_picture(path("p.png"));
    ASSERT_EQ(picture.grey.size(), maxima.size());
    int bright = 0;
    for (size_t i = 0; i < maxima.size(); ++i) {
      const double grey = std::clamp((maxima[i] + 500) * 255 / 2000, 0.0, 255.0);
      bright += grey > 100;
      EXPECT_GT(picture.grey[i], grey - 1.128) << "pixel " << i;
      EXPECT_LT(picture.grey[i], grey + 0.001) << "pixel " << i;
    }
    EXPECT_GT(bright, 100);
  }
};

TEST_F(PhantomTest, LooksAsComputed) {
  Scene scene;
  scene.azimuth = 30;
  scene.elevation = 20;
  scene.perspective = true;
  scene.width = 72;
  scene.step = 1;
  compare(scene, "--view 30,20");
}

// What is darker than the skull shows in a slab only.
TEST_F(PhantomTest, OrbitsLookAsComputed) {
  Scene scene;
  scene.width = 72;
  scene.step = 1;
  scene.near = -75.4;
  scene.far = -64.6;
  compare(scene, "--projection orthographic --depth-range -75.4,-64.6");
}

TEST_F(PhantomTest, SameBytesForEveryNumberOfThreads) {
  for (const char* how : {"", "--projection orthographic --interpolation nearest", "--layout stack",
                          "--layout stack --projection orthographic --depth-range -20,30"}) {
    std::string first;
    for (const char* threads : {"1", "2", "5"}) {
      const Outcome outcome =
          run("--phantom -o p.png --view 50,10 --size 75x66 --quiet " + std::string(how) + " -j" + threads);
      ASSERT_EQ(outcome.status, 0) << outcome.err;
      const std::string bytes = read_text(path("p.png"));
      if (first.empty()) first = bytes;
      EXPECT_EQ(bytes, first) << how << " -j" << threads;
    }
  }
}

// By default the window comes from the voxels: black at the value that three quarters of them do not
// exceed, white at the one that all but a ten-thousandth do not exceed.
TEST_F(PhantomTest, DefaultWindowComesFromPercentiles) {
  std::vector<double> values = phantom().values;
  std::sort(values.begin(), values.end());
  const auto percentile = [&](double share) {
    return static_cast<int>(
        values[static_cast<size_t>(std::ceil(share * static_cast<double>(values.size()))) - 1]);
  };
  const int black = percentile(0.75);
  const int white = percentile(0.9999);
  ASSERT_EQ(run("--phantom -o a.png --size 40x40 --quiet").status, 0);
  ASSERT_EQ(run("--phantom -o b.png --size 40x40 --quiet --window " + std::to_string((black + white) / 2.0) +
                "," + std::to_string(white - black))
                .status,
            0);
  EXPECT_EQ(read_text(path("a.png")), read_text(path("b.png")));
}

}  // namespace
