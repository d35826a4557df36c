#include "plain_renderer.h"

#include <algorithm>
#include <limits>
#include <numbers>

namespace zox_test {
namespace {

// Exact at right angles, so that views along the axes see along the axes.
double sine(double degrees) {
  const double value = std::sin(degrees * std::numbers::pi / 180);
  return std::fmod(degrees, 90) == 0 ? std::round(value) : value;
}
double cosine(double degrees) {
  const double value = std::cos(degrees * std::numbers::pi / 180);
  return std::fmod(degrees, 90) == 0 ? std::round(value) : value;
}

int clamp(int index, int size) { return std::clamp(index, 0, size - 1); }

// Eight neighbours; where a volume is one voxel thin, both of a pair are the same.
struct Cell {
  int first[3] = {-1, -1, -1};
  double corners[8] = {};

  void load(const PlainVolume& volume, const int from[3]) {
    if (std::equal(from, from + 3, first)) return;
    std::copy(from, from + 3, first);
    for (int corner = 0; corner < 8; ++corner)
      corners[corner] = volume.at(clamp(from[0] + (corner & 1), volume.size[0]),
                                  clamp(from[1] + (corner >> 1 & 1), volume.size[1]),
                                  clamp(from[2] + (corner >> 2), volume.size[2]));
  }

  double value(const Vec& at) const {
    const double x = at[0] - first[0], y = at[1] - first[1], z = at[2] - first[2];
    const auto along_x = [&](int pair) { return corners[pair] * (1 - x) + corners[pair + 1] * x; };
    const double lower = along_x(0) * (1 - y) + along_x(2) * y;
    const double upper = along_x(4) * (1 - y) + along_x(6) * y;
    return lower * (1 - z) + upper * z;
  }
};

}  // namespace

Vec PlainVolume::millimetres(const Vec& voxel) const {
  Vec along_z = axes[2] * voxel[2];
  if (!positions.empty()) {
    const int last = static_cast<int>(positions.size()) - 1;
    const int below = last == 0 ? 0 : std::clamp(static_cast<int>(std::floor(voxel[2])), 0, last - 1);
    const double spacing =
        last == 0 ? 1 : positions[static_cast<size_t>(below) + 1] - positions[static_cast<size_t>(below)];
    along_z = unit(axes[2]) * (positions[static_cast<size_t>(below)] + (voxel[2] - below) * spacing);
  }
  return origin + axes[0] * voxel[0] + axes[1] * voxel[1] + along_z;
}

Vec PlainVolume::center() const {
  const Vec last = millimetres({size[0] - 1.0, size[1] - 1.0, size[2] - 1.0});
  return (millimetres({0, 0, 0}) + last) * 0.5;
}

PlainRenderer::PlainRenderer(const PlainVolume& volume, const zox_render_view& view, double pixel_size,
                             double step, const Play& play)
    : volume_(volume), view_(view), pixel_size_(pixel_size), step_(step), play_(play) {
  const double sa = sine(view.azimuth), ca = cosine(view.azimuth);
  const double se = sine(view.elevation), ce = cosine(view.elevation);
  // The viewer stands at the back of `forward`: x to the patient's left, y to the back, z to the head.
  forward_ = {-ce * sa, ce * ca, -se};
  const Vec upright = {-se * sa, se * ca, ce};
  const Vec level = cross(forward_, upright);
  up_ = upright * cosine(view.roll) + level * sine(view.roll);
  right_ = level * cosine(view.roll) - upright * sine(view.roll);
  if (view.use_orientation) {
    std::copy(view.orientation[0], view.orientation[0] + 3, right_.begin());
    std::copy(view.orientation[1], view.orientation[1] + 3, up_.begin());
    std::copy(view.orientation[2], view.orientation[2] + 3, forward_.begin());
  }
  center_ = view.use_center ? Vec{view.center[0], view.center[1], view.center[2]} : volume.center();
  if (view.projection == ZOX_RENDER_PERSPECTIVE)
    eye_distance_ = std::max(view.width, view.height) * pixel_size / 2 /
                    std::tan(view.field_of_view / 2 * std::numbers::pi / 180);
  third_axis_ = volume.positions.empty() ? volume.axes[2] : unit(volume.axes[2]);
}

Vec PlainRenderer::position(double column, double row, double sample) const {
  const Vec on_plane = center_ + right_ * ((column - (view_.width - 1) / 2.0) * pixel_size_) -
                       up_ * ((row - (view_.height - 1) / 2.0) * pixel_size_);
  if (view_.projection == ZOX_RENDER_ORTHOGRAPHIC) return on_plane + forward_ * (sample * step_);
  const Vec eye = center_ - forward_ * eye_distance_;
  return eye + unit(on_plane - eye) * (eye_distance_ + sample * step_);
}

Vec PlainRenderer::voxel(const Vec& millimetres) const {
  Vec voxel = coordinates(volume_.axes[0], volume_.axes[1], third_axis_, millimetres - volume_.origin);
  const std::vector<double>& positions = volume_.positions;
  if (positions.size() < 2) return voxel;
  const auto above = std::upper_bound(positions.begin() + 1, positions.end() - 1, voxel[2]);
  const double below = *(above - 1);
  voxel[2] = static_cast<double>(above - 1 - positions.begin()) + (voxel[2] - below) / (*above - below);
  return voxel;
}

// Generously: every sample that is not a voxel and a half outside, or more.
PlainRenderer::Range PlainRenderer::sample_numbers(int column, int row) const {
  const Vec at = position(column, row, 0) - volume_.origin;
  const Vec next = position(column, row, 1) - volume_.origin;
  const Vec middle = coordinates(volume_.axes[0], volume_.axes[1], third_axis_, at);
  const Vec step = coordinates(volume_.axes[0], volume_.axes[1], third_axis_, next) - middle;
  double first = -1e6, last = 1e6;
  for (size_t a = 0; a < 3; ++a) {
    double low = -1.5, high = volume_.size[a] + 0.5;
    if (a == 2 && !volume_.positions.empty()) {
      const double beyond = 2 * (volume_.positions.back() - volume_.positions.front()) + 1;
      low = volume_.positions.front() - beyond;
      high = volume_.positions.back() + beyond;
    }
    if (std::abs(step[a]) < 1e-9) {
      if (middle[a] < low || middle[a] > high) return {0, -1};
      continue;
    }
    const double one = (low - middle[a]) / step[a], other = (high - middle[a]) / step[a];
    first = std::max(first, std::floor(std::min(one, other)));
    last = std::min(last, std::ceil(std::max(one, other)));
  }
  if (view_.projection == ZOX_RENDER_PERSPECTIVE)  // nothing behind the viewer
    first = std::max(first, std::ceil(-eye_distance_ / step_));
  return {static_cast<int>(first), static_cast<int>(last)};
}

bool PlainRenderer::within_slab(double sample) const {
  const double depth = sample * step_;
  return depth >= view_.slab_near && depth <= view_.slab_far;
}

void PlainRenderer::ray(int column, int row, std::vector<PlainSample>& samples) const {
  samples.clear();
  PlainSample sample{};
  if (view_.slab_near == view_.slab_far) {
    const double number = view_.slab_near / step_;
    const bool behind = view_.projection == ZOX_RENDER_PERSPECTIVE && view_.slab_near < -eye_distance_;
    if (behind) return;
    if (take(number, voxel(position(column, row, number)), sample)) samples.push_back(sample);
    return;
  }
  const Range range = sample_numbers(column, row);
  for (int n = range.first; n <= range.last; ++n)
    if (within_slab(n) && take(n, voxel(position(column, row, n)), sample)) samples.push_back(sample);
}

bool PlainRenderer::take(double number, const Vec& voxel, PlainSample& sample) const {
  const double along_one = play_.start + play_.step * std::abs(number);
  const Vec play = {along_one, along_one, along_one * play_.slices};
  // A nearest sample is its voxel's, so the outermost voxels reach half a voxel further.
  const double reach = view_.interpolation == ZOX_RENDER_NEAREST ? 0.5 : 0;
  sample.number = static_cast<int>(std::lround(number));
  sample.sure = true;
  for (size_t a = 0; a < 3; ++a) {
    const double inside = std::min(voxel[a] + reach, volume_.size[a] - 1 + reach - voxel[a]);
    const double outside = a == 2 && !volume_.positions.empty() ? reach * 0.04 : 0;
    if (inside < -play[a] - play_.border - outside) return false;
    if (inside < play[a] + play_.border) sample.sure = false;
    // How far the outermost of uneven slices reach to the outside is not told to the last bit.
    if (a == 2 && !volume_.positions.empty() && reach > 0 && inside < 0.02) sample.sure = false;
  }
  const Vec below = play + Vec{0, play_.weight, play_.weight};
  if (view_.interpolation == ZOX_RENDER_NEAREST)
    spread_nearest(voxel, below, play, sample);
  else
    spread_trilinear(voxel, below, play, sample);
  return true;
}

// Within a cell the extremes of a trilinear function over a box are at the box's corners, so a box that
// reaches into other cells is cut at the planes of voxels.
void PlainRenderer::spread_trilinear(const Vec& voxel, const Vec& below, const Vec& above,
                                     PlainSample& sample) const {
  struct Stop {
    double at;
    int cell;
  };
  Stop stops[3][4];
  int count[3];
  for (size_t a = 0; a < 3; ++a) {
    const double top = volume_.size[a] - 1;
    const double low = std::clamp(voxel[a] - below[a], 0.0, top);
    const double high = std::clamp(voxel[a] + above[a], 0.0, top);
    const auto cell_of = [&](double at) {
      return std::max(0, std::min(static_cast<int>(at), volume_.size[a] - 2));
    };
    stops[a][0] = {low, cell_of(low)};
    count[a] = 1;
    if (high > low) stops[a][count[a]++] = {high, cell_of(high)};
    if (cell_of(high) != cell_of(low)) stops[a][count[a]++] = {std::floor(high), cell_of(high)};
  }
  sample.low = sample.least = std::numeric_limits<double>::infinity();
  sample.high = sample.largest = -std::numeric_limits<double>::infinity();
  Cell cell;
  for (int z = 0; z < count[2]; ++z)
    for (int y = 0; y < count[1]; ++y)
      for (int x = 0; x < count[0]; ++x) {
        const int from[3] = {stops[0][x].cell, stops[1][y].cell, stops[2][z].cell};
        cell.load(volume_, from);
        const double value = cell.value({stops[0][x].at, stops[1][y].at, stops[2][z].at});
        sample.low = std::min(sample.low, value);
        sample.high = std::max(sample.high, value);
        sample.least = std::min(sample.least, *std::min_element(cell.corners, cell.corners + 8));
        sample.largest = std::max(sample.largest, *std::max_element(cell.corners, cell.corners + 8));
      }
  sample.value = (sample.low + sample.high) / 2;
  // Rounding of the sums above must not count as a difference.
  sample.low = std::max(sample.low - play_.value, sample.least);
  sample.high = std::min(sample.high, sample.largest);
}

void PlainRenderer::spread_nearest(const Vec& voxel, const Vec& below, const Vec& above,
                                   PlainSample& sample) const {
  int low[3], high[3];
  for (size_t a = 0; a < 3; ++a) {
    low[a] = clamp(static_cast<int>(std::floor(voxel[a] - below[a] + 0.5)), volume_.size[a]);
    high[a] = clamp(static_cast<int>(std::floor(voxel[a] + above[a] + 0.5)), volume_.size[a]);
  }
  sample.low = std::numeric_limits<double>::infinity();
  sample.high = -sample.low;
  for (int z = low[2]; z <= high[2]; ++z)
    for (int y = low[1]; y <= high[1]; ++y)
      for (int x = low[0]; x <= high[0]; ++x) {
        sample.low = std::min(sample.low, volume_.at(x, y, z));
        sample.high = std::max(sample.high, volume_.at(x, y, z));
      }
  sample.least = sample.low;
  sample.largest = sample.high;
  sample.value = sample.low;
}

}  // namespace zox_test
