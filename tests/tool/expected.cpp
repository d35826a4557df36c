#include "expected.h"

#include <algorithm>
#include <cmath>

namespace {

// The renderer keeps clear of the volume's border by two units of 2^-20 voxel per sample: less than
// this for rays of up to 500 samples. What lies between must not matter to a test: volumes have a
// border of their lowest value.
constexpr double kBorder = 0.001;

Point scaled(const Point& a, double s) { return {a[0] * s, a[1] * s, a[2] * s}; }
Point sum(const Point& a, const Point& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
double product(const Point& a, const Point& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

struct Viewer {
  Point right, up, forward;
};

// The viewer in front of the face, carried around the vertical axis and then raised.
Viewer place_viewer(double azimuth, double elevation) {
  const double a = azimuth * M_PI / 180;
  const double e = elevation * M_PI / 180;
  const Point right = {std::cos(a), std::sin(a), 0};
  const Point level = {std::sin(a), -std::cos(a), 0};  // to the viewer, before raising
  const Point vertical = {0, 0, 1};
  const Point to_viewer = sum(scaled(level, std::cos(e)), scaled(vertical, std::sin(e)));
  return {right, sum(scaled(vertical, std::cos(e)), scaled(level, -std::sin(e))), scaled(to_viewer, -1)};
}

Point to_world(const TestVolume& volume, const Point& voxels) {
  Point world{};
  for (size_t axis = 0; axis < 3; ++axis) world = sum(world, scaled(volume.axes[axis], voxels[axis]));
  return world;
}

// Gauss's elimination with the largest pivot.
Point to_index(const TestVolume& volume, const Point& world) {
  std::array<std::array<double, 4>, 3> row;
  for (size_t r = 0; r < 3; ++r) row[r] = {volume.axes[0][r], volume.axes[1][r], volume.axes[2][r], world[r]};
  for (size_t c = 0; c < 3; ++c) {
    size_t pivot = c;
    for (size_t r = c; r < 3; ++r)
      if (std::abs(row[r][c]) > std::abs(row[pivot][c])) pivot = r;
    std::swap(row[c], row[pivot]);
    for (size_t r = 0; r < 3; ++r)
      if (r != c) {
        const double factor = row[r][c] / row[c][c];
        for (size_t i = c; i < 4; ++i) row[r][i] -= factor * row[c][i];
      }
  }
  return {row[0][3] / row[0][0], row[1][3] / row[1][1], row[2][3] / row[2][2]};
}

// With the eye at c pitches from the middle, where the longer side spans 30 degrees.
double eye_distance(const Scene& scene, double pitch) {
  return std::max(scene.width, scene.height) / 2.0 * pitch / std::tan(15 * M_PI / 180);
}

bool fits(const TestVolume& volume, const Scene& scene, const Viewer& viewer, double pitch) {
  for (int corner = 0; corner < 8; ++corner) {
    const Point p = to_world(
        volume, {(corner & 1 ? 0.5 : -0.5) * volume.size[0], (corner & 2 ? 0.5 : -0.5) * volume.size[1],
                 (corner & 4 ? 0.5 : -0.5) * volume.size[2]});
    const double distance = eye_distance(scene, pitch);
    const double depth = distance + product(p, viewer.forward);
    if (scene.perspective && depth <= 0) return false;
    const double shrink = scene.perspective ? distance / depth : 1;
    if (std::abs(product(p, viewer.right)) * shrink > scene.width / 2.0 * pitch) return false;
    if (std::abs(product(p, viewer.up)) * shrink > scene.height / 2.0 * pitch) return false;
  }
  return true;
}

double smallest_pitch(const TestVolume& volume, const Scene& scene, const Viewer& viewer) {
  double low = 0;
  double high = 1e6;
  for (int i = 0; i < 200; ++i) {
    const double middle = (low + high) / 2;
    (fits(volume, scene, viewer, middle) ? high : low) = middle;
  }
  return high;
}

bool is_inside(const TestVolume& volume, const Scene& scene, const Point& p) {
  for (size_t axis = 0; axis < 3; ++axis) {
    const double beyond = scene.nearest ? 0.5 : 0;
    if (p[axis] < -beyond + kBorder || p[axis] > volume.size[axis] - 1 + beyond - kBorder) return false;
  }
  return true;
}

double sample(const TestVolume& volume, bool nearest, const Point& p) {
  if (nearest)
    return volume.at(static_cast<int>(std::floor(p[0] + 0.5)), static_cast<int>(std::floor(p[1] + 0.5)),
                     static_cast<int>(std::floor(p[2] + 0.5)));
  double value = 0;
  for (int corner = 0; corner < 8; ++corner) {
    std::array<int, 3> voxel;
    double weight = 1;
    for (size_t axis = 0; axis < 3; ++axis) {
      const int upper = corner >> axis & 1;
      const int whole = static_cast<int>(std::floor(p[axis]));
      voxel[axis] = whole + upper;
      weight *= upper ? p[axis] - whole : 1 - (p[axis] - whole);
    }
    value += weight * volume.at(voxel[0], voxel[1], voxel[2]);
  }
  // The sum errs in its last bits, the simple fractions that some tests mean do not.
  return std::round(value * 1048576) / 1048576;
}

// Whether a value takes the place of one nearer to the viewer.
bool wins(Reduction reduction, double value, double before) {
  switch (reduction) {
    case Reduction::kMin:
      return value < before;
    case Reduction::kAbsMax:
      return std::abs(value) > std::abs(before) || (value == -before && value > 0);
    default:
      return value > before;
  }
}

ExpectedPixel reduced_ray(const TestVolume& volume, const Scene& scene, const Point& middle,
                          const Point& direction) {
  double spacing = std::numeric_limits<double>::infinity();
  double reach = 0;
  for (size_t axis = 0; axis < 3; ++axis) {
    const double length = std::sqrt(product(volume.axes[axis], volume.axes[axis]));
    spacing = std::min(spacing, length);
    reach += length * volume.size[axis];
  }
  const double step = scene.step * spacing;
  ExpectedPixel pixel;
  double sum_of_values = 0;
  int count = 0;
  for (int n = -static_cast<int>(reach / step); n <= static_cast<int>(reach / step); ++n) {
    if (n * step < scene.near || n * step > scene.far) continue;
    Point p = to_index(volume, sum(middle, scaled(direction, n * step)));
    for (size_t axis = 0; axis < 3; ++axis) p[axis] += (volume.size[axis] - 1) / 2.0;
    if (!is_inside(volume, scene, p)) continue;
    const double value = sample(volume, scene.nearest, p);
    sum_of_values += value;
    if (count++ == 0 || wins(scene.reduction, value, pixel.value)) pixel = {value, n};
  }
  if (scene.reduction == Reduction::kMean && count > 0) pixel.value = sum_of_values / count;
  return pixel;
}

}  // namespace

std::vector<ExpectedPixel> expected_pixels(const TestVolume& volume, const Scene& scene) {
  const Viewer viewer = place_viewer(scene.azimuth, scene.elevation);
  const double pitch = smallest_pitch(volume, scene, viewer);
  std::vector<ExpectedPixel> pixels;
  for (int row = 0; row < scene.height; ++row)
    for (int column = 0; column < scene.width; ++column) {
      const Point on_plane = sum(scaled(viewer.right, (column + 0.5 - scene.width / 2.0) * pitch),
                                 scaled(viewer.up, (scene.height / 2.0 - row - 0.5) * pitch));
      Point middle = on_plane;
      Point direction = viewer.forward;
      if (scene.perspective) {
        const double distance = eye_distance(scene, pitch);
        const Point eye = scaled(viewer.forward, -distance);
        const Point from_eye = sum(on_plane, scaled(eye, -1));
        direction = scaled(from_eye, 1 / std::sqrt(product(from_eye, from_eye)));
        middle = sum(eye, scaled(direction, distance));
      }
      pixels.push_back(reduced_ray(volume, scene, middle, direction));
    }
  return pixels;
}

std::vector<double> expected_values(const TestVolume& volume, const Scene& scene) {
  std::vector<double> values;
  for (const ExpectedPixel& pixel : expected_pixels(volume, scene)) values.push_back(pixel.value);
  return values;
}

int expected_grey(double value, double center, double width) {
  const double share = (value - (center - width / 2)) / width;
  return share <= 0 ? 0 : share >= 1 ? 255 : static_cast<int>(share * 255);
}
