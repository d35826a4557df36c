#include "views.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <stdexcept>

namespace bench {
namespace {

constexpr int kImage = 512;
constexpr int kTile = 8;
constexpr int kTiles = kImage / kTile;  // a row of the image
// Fixed-point steps are off by up to 2^-20 of a voxel each; this covers a thousand of them.
constexpr double kMargin = 0.01;

using Point = std::array<double, 3>;

Point along(const Point& p, double t, const Point& d) {
  return {p[0] + t * d[0], p[1] + t * d[1], p[2] + t * d[2]};
}

// The image plane goes through the middle of the volume; right and down are its axes.
struct Camera {
  Point forward, right, down;
  bool perspective;
};

// All axes are of length one and at right angles.
Camera camera_of(const std::string& view) {
  if (view == "z") return {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}, false};
  if (view == "x") return {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, false};
  if (view == "oblique") return {{0.48, 0.6, 0.64}, {0.8, 0, -0.6}, {-0.36, 0.8, -0.48}, false};
  if (view == "falling") return {{0.48, 0.6, -0.64}, {0.8, 0, 0.6}, {0.36, -0.8, -0.48}, false};
  if (view == "perspective") return {{0.48, 0.6, 0.64}, {0.8, 0, -0.6}, {-0.36, 0.8, -0.48}, true};
  throw std::invalid_argument("unknown view " + view);
}

struct Ray {
  Point start, step;
  int32_t count;
};

class Scene {
 public:
  Scene(const Volume& volume, const std::string& view)
      : camera_(camera_of(view)),
        last_(volume.shape.edge - 1),
        high_{last_ - kMargin, last_ - kMargin, volume.depth - kMargin},
        middle_{last_ / 2, last_ / 2, volume.depth / 2},
        pixel_(last_ / kImage),
        eye_(along(middle_, -2.0 * volume.shape.edge, camera_.forward)) {}

  Ray ray(int column, int row) const {
    const Point at = along(along(middle_, (column + 0.5 - kImage / 2.0) * pixel_, camera_.right),
                           (row + 0.5 - kImage / 2.0) * pixel_, camera_.down);
    return clipped(at, camera_.perspective ? unit_from_eye(at) : camera_.forward);
  }

 private:
  Point unit_from_eye(const Point& at) const {
    const Point d = along(at, -1.0, eye_);
    const double length = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
    return {d[0] / length, d[1] / length, d[2] / length};
  }

  Ray clipped(const Point& at, const Point& step) const {
    double enter = -1e9, leave = 1e9;
    for (int a = 0; a < 3; ++a) {
      if (step[a] == 0.0) {
        if (at[a] < kMargin || at[a] > high_[a]) return {at, step, 0};
        continue;
      }
      const double t0 = (kMargin - at[a]) / step[a], t1 = (high_[a] - at[a]) / step[a];
      enter = std::max(enter, std::min(t0, t1));
      leave = std::min(leave, std::max(t0, t1));
    }
    if (enter > leave) return {at, step, 0};
    return {along(at, enter, step), step, static_cast<int32_t>(leave - enter) + 1};
  }

  Camera camera_;
  double last_;
  Point high_, middle_;
  double pixel_;
  Point eye_;
};

struct Tile {
  int column, row;
};

// The image parted into side x side squares: the tile in the middle of each.
std::vector<Tile> spread_tiles(int side) {
  std::vector<Tile> tiles;
  const int apart = kTiles / side;
  for (int i = 0; i < side * side; ++i)
    tiles.push_back({i % side * apart + apart / 2, i / side * apart + apart / 2});
  return tiles;
}

std::vector<Tile> tiles_of(const std::string& load) {
  if (load == "cold") return spread_tiles(8);
  if (load != "warm") return spread_tiles(6);
  std::vector<Tile> tiles;
  for (int i = 0; i < 2 * kTiles; ++i) tiles.push_back({i % kTiles, kTiles / 3 + i / kTiles});
  return tiles;
}

void shape_counts(Batch& batch, const std::string& load, std::mt19937& random) {
  if (load == "ragged")
    for (int32_t& count : batch.counts) count = static_cast<int32_t>(random() % (count + 1));
  if (load == "short")
    for (std::size_t r = 0; r < batch.counts.size(); ++r) {
      const int32_t skipped = std::max(0, batch.counts[r] / 2 - 2);
      batch.starts[r] = along(batch.starts[r], skipped, batch.steps[r]);
      batch.counts[r] = std::min(batch.counts[r], 4);
    }
}

void connect(Batch& batch) {
  for (std::size_t r = 0; r < batch.starts.size(); ++r) {
    batch.start_pointers.push_back(batch.starts[r].data());
    batch.step_pointers.push_back(batch.steps[r].data());
  }
  batch.record.nrays = static_cast<int32_t>(batch.counts.size());
  batch.record.starts = batch.start_pointers.data();
  batch.record.steps = batch.step_pointers.data();
  batch.record.nsamples = batch.counts.data();
}

}  // namespace

int64_t Batch::samples() const { return std::accumulate(counts.begin(), counts.end(), int64_t{0}); }

int32_t Batch::longest() const { return *std::max_element(counts.begin(), counts.end()); }

std::vector<Batch> make_batches(const Volume& volume, const std::string& view, const std::string& load) {
  const Scene scene(volume, view);
  const int nrays = load.starts_with("rays") ? std::stoi(load.substr(4)) : kTile * kTile;
  std::mt19937 random(11);
  std::vector<Batch> batches;
  for (const Tile tile : tiles_of(load)) {
    Batch batch;
    for (int r = 0; r < nrays; ++r) {
      const Ray ray = scene.ray(tile.column * kTile + r % kTile, tile.row * kTile + r / kTile);
      batch.starts.push_back(ray.start);
      batch.steps.push_back(ray.step);
      batch.counts.push_back(ray.count);
    }
    // A tile at the volume's silhouette would measure its empty rays.
    if (*std::min_element(batch.counts.begin(), batch.counts.end()) == 0) continue;
    shape_counts(batch, load, random);
    connect(batch);
    batches.push_back(std::move(batch));
  }
  return batches;
}

}  // namespace bench
