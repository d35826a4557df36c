// Pictures against the samples of their rays, each computed by itself at its place on the grid.
#include <gtest/gtest.h>

#include "cast/end_sample.h"
#include "effort.h"
#include "picture/order.h"
#include "scene.h"
#include "view/clip.h"
#include "volume/volume.h"

namespace zox_test {
namespace {

struct Ray {
  std::vector<int> samples, lowest, highest;  // a sample, and the smallest and largest of its voxels
  std::vector<double> numbers;
};

void take(const render::Volume& volume, bool nearest, const std::array<double, 3>& position, double number,
          Ray& ray) {
  int low[3], high[3];
  for (size_t a = 0; a < 3; ++a) {
    const double local = position[a] / render::kGrid - volume.first[a];
    low[a] = static_cast<int>(std::floor(nearest ? local + 0.5 : local));
    high[a] = nearest ? low[a] : std::min(low[a] + 1, volume.size[a] - 1);
  }
  int lowest = INT_MAX, highest = INT_MIN;
  for (int corner = 0; corner < 8; ++corner) {
    const int sample = volume.sample(corner & 1 ? high[0] : low[0], corner & 2 ? high[1] : low[1],
                                     corner & 4 ? high[2] : low[2]);
    lowest = std::min(lowest, sample);
    highest = std::max(highest, sample);
  }
  ray.lowest.push_back(lowest);
  ray.highest.push_back(highest);
  ray.samples.push_back(nearest ? lowest : render::end_sample(volume, position));
  ray.numbers.push_back(number);
}

Ray walk(const render::Volume& volume, const render::Rays& rays, bool nearest, int column, int row) {
  Ray ray;
  const render::Line line = rays.line(column, row);
  const render::SampleBox box = render::owned_box(volume, nearest);
  for (size_t j = 0; j < volume.frame.regions.size(); ++j) {
    render::Piece piece{line, rays.depths()};
    if (!volume.frame.even()) piece = render::piece_in_region(volume.frame, j, nearest, line, rays.depths());
    const render::Stretch all = render::clip(box, piece.line, piece.samples);
    for (double n = all.first; n <= all.last; ++n) {
      std::array<double, 3> position;
      for (size_t a = 0; a < 3; ++a) position[a] = piece.line.middle[a] + n * piece.line.step[a];
      take(volume, nearest, position, n + rays.number_offset(), ray);
    }
  }
  return ray;
}

// The winner's place, the nearest of equals, among the samples; the mean where that is asked for.
struct Expected {
  int sample;
  double number;
};

Expected reduce(const Ray& ray, const render::Order& order, bool mean) {
  Expected expected{ray.samples[0], ray.numbers[0]};
  double sum = 0;
  for (size_t i = 0; i < ray.samples.size(); ++i) {
    sum += ray.samples[i];
    const bool nearer = ray.samples[i] == expected.sample && ray.numbers[i] < expected.number;
    if (order.better(ray.samples[i], expected.sample) || nearer) expected = {ray.samples[i], ray.numbers[i]};
  }
  if (mean)
    expected.sample = static_cast<int>(std::floor(sum / static_cast<double>(ray.samples.size()) + 0.5));
  return expected;
}

class SingleSamples {
 public:
  explicit SingleSamples(uint64_t seed) : scene_(seed) {}

  void check() {
    SCOPED_TRACE(scene_.text);
    ASSERT_EQ(zox_render_volume_create(&scene_.array, &scene_.options, nullptr, &handle_.volume),
              ZOX_RENDER_OK)
        << zox_render_last_error();
    const render::Volume& volume = *handle_.volume->volume;
    const render::Camera camera = render::make_camera(scene_.view, volume.frame);
    const render::Rays rays(camera, volume.frame, scene_.view);
    const Picture picture = render_picture(handle_.volume, scene_.view);
    const bool nearest = scene_.view.interpolation == ZOX_RENDER_NEAREST;
    for (int i = 0; i < scene_.view.width * scene_.view.height && !::testing::Test::HasFailure(); ++i) {
      SCOPED_TRACE(::testing::Message() << "pixel " << i);
      check_pixel(picture, static_cast<size_t>(i),
                  walk(volume, rays, nearest, i % scene_.view.width, i / scene_.view.width));
    }
  }

 private:
  // Bricks round eight products, one after the other, whose last bits may tip a half.
  void check_pixel(const Picture& picture, size_t i, const Ray& ray) const {
    if (ray.samples.empty()) {
      EXPECT_EQ(picture.samples[i], ZOX_RENDER_NOTHING);
      EXPECT_EQ(picture.pixels[i], 0);
      return;
    }
    const render::Volume& volume = *handle_.volume->volume;
    const render::Order order(scene_.view.reduction, volume.storage.slope, volume.storage.intercept);
    const Expected expected = reduce(ray, order, scene_.view.reduction == ZOX_RENDER_MEAN);
    const bool bricks = volume.layout == render::Layout::kBricks;
    if (!bricks) {
      EXPECT_EQ(picture.samples[i], expected.sample);
    } else if (scene_.view.reduction != ZOX_RENDER_LARGEST_MAGNITUDE) {
      EXPECT_NEAR(picture.samples[i], expected.sample, 1);
    } else {
      EXPECT_NEAR(order.magnitude(picture.samples[i]), order.magnitude(expected.sample),
                  1.01 * volume.storage.slope);
    }
    if (scene_.view.reduction == ZOX_RENDER_MEAN) return;
    const auto winner = std::find(ray.numbers.begin(), ray.numbers.end(), picture.depths[i]);
    ASSERT_NE(winner, ray.numbers.end());
    const size_t place = static_cast<size_t>(winner - ray.numbers.begin());
    EXPECT_GE(picture.samples[i], ray.lowest[place]);
    EXPECT_LE(picture.samples[i], ray.highest[place]);
    if (!bricks) EXPECT_EQ(picture.depths[i], expected.number);
  }

  Scene scene_;
  Handle handle_;
};

TEST(SingleSamples, MakeThePicture) {
  const Seeds wanted = seeds(1, 400);
  for (uint64_t seed = wanted.first; seed < wanted.first + wanted.count && !HasFailure(); ++seed) {
    SingleSamples samples(seed);
    samples.check();
  }
}

}  // namespace
}  // namespace zox_test
