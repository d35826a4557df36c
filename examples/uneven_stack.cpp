// A stack of slices at uneven positions, as they lie in memory, in perspective, on several threads.
//     c++ -std=c++17 uneven_stack.cpp -o uneven_stack $(pkg-config --cflags --libs zox_volume) -pthread
//     ./uneven_stack rings.pgm
#include <zox_volume.h>
#include <zox_volume_layout.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <thread>
#include <vector>

namespace {

constexpr int kColumns = 128, kRows = 128, kTile = 8, kWidth = 240, kHeight = 240, kSamples = 400;
using Point = std::array<double, 3>;

// Slices 1 apart, then 3 apart, with one missing; x, y and z in units of a pixel.
std::vector<double> slice_positions() {
  std::vector<double> positions;
  for (int s = 0; s < 40; ++s)
    if (s != 20) positions.push_back(s);
  for (int s = 0; s < 20; ++s) positions.push_back(42 + 3 * s);
  return positions;
}

// Two linked rings, each slice painted where it stands.
std::vector<int16_t> paint(const std::vector<double>& positions) {
  std::vector<int16_t> voxels(kColumns * kRows * positions.size());
  for (size_t s = 0; s < positions.size(); ++s)
    for (int y = 0; y < kRows; ++y)
      for (int x = 0; x < kColumns; ++x) {
        const double u = x - 52, v = y - 64, w = positions[s] - 50;
        const double flat = std::hypot(std::hypot(u, w) - 30, v),
                     upright = std::hypot(std::hypot(u - 28, v) - 30, w);
        const double value =
            std::max(std::min(1.0, (9 - flat) / 4) * 150, std::min(1.0, (9 - upright) / 4) * 250);
        voxels[static_cast<size_t>(x + kColumns * (y + kRows * static_cast<int>(s)))] =
            static_cast<int16_t>(std::max(0.0, value));
      }
  return voxels;
}

// The volume's record with the tables that it points to.
struct Stack {
  explicit Stack(const std::vector<int16_t>& voxels, const std::vector<double>& positions)
      : slices(positions.size() + 1),
        rowoffs(kRows),
        regslice(positions.size()),
        regscale(positions.size()),
        regbounds(positions.size() + 1) {
    const auto layers = static_cast<int32_t>(positions.size());
    zox_stack_fill(&volume, voxels.data(), kRows, layers, 2 * kColumns, 2 * kColumns * kRows, slices.data(),
                   rowoffs.data());
    zox_stack_regions(&volume, positions.data(), layers, 1e-6, regslice.data(), regbounds.data(),
                      regscale.data());
    box = zox_stack_box(&volume, kColumns, kRows, 1);
  }
  zox_Volume volume{};
  zox_SampleBox box{};
  std::vector<const void*> slices;
  std::vector<int32_t> rowoffs, regslice;
  std::vector<double> regscale, regbounds;
};

// One tile of 8 x 8 rays from the eye; General operations take at most 64 rays. What a thread needs again and
// again stands here.
class Tile {
 public:
  Tile() : samples_(kSamples) {
    for (auto& plane : samples_) planes_.push_back(plane.data());
  }

  int cast(const Stack& stack, int left, int top, std::vector<int16_t>& picture) {
    const Point eye = {-40, -140, 152}, forward = {0.4082, 0.8165, -0.4082}, right = {0.8944, -0.4472, 0},
                down = {-0.1826, -0.3651, -0.9129};
    int32_t rays = 0;
    std::array<int, 64> pixels;
    for (int i = 0; i < kTile * kTile; ++i) {
      const int column = left + i % kTile, row = top + i / kTile;
      const double across = (column - kWidth / 2) * 0.0019, along = (row - kHeight / 2) * 0.0019;
      const auto r = static_cast<size_t>(rays);
      double length = 0;
      for (size_t a = 0; a < 3; ++a) steps_[r][a] = forward[a] + across * right[a] + along * down[a];
      for (const double d : steps_[r]) length += d * d;
      for (double& d : steps_[r]) d /= std::sqrt(length);
      int32_t first = 0;
      // The volume begins well behind the eye: start 100 units on.
      for (size_t a = 0; a < 3; ++a) starts_[r][a] = eye[a] + 100 * steps_[r][a];
      counts_[r] = zox_clip(&stack.box, starts_[r].data(), steps_[r].data(), kSamples, &first);
      if (counts_[r] == 0) continue;
      for (size_t a = 0; a < 3; ++a) starts_[r][a] += first * steps_[r][a];
      start_of_[r] = starts_[r].data();
      step_of_[r] = steps_[r].data();
      pixels[r] = column + kWidth * row;
      ++rays;
    }
    const zox_Rays batch = {planes_.data(), rays, start_of_.data(), step_of_.data(), counts_.data()};
    int status = zox_Volume_RayCast_General_Divergent_Trilinear_16S(&stack.volume, &batch);
    std::array<int16_t, 64> maxima;
    if (status == ZOX_STS_NO_ERROR && rays > 0) status = zox_Volume_FindMax_16S(&batch, maxima.data());
    for (size_t r = 0; r < static_cast<size_t>(rays); ++r)
      picture[static_cast<size_t>(pixels[r])] = maxima[r];
    return status;
  }

 private:
  std::vector<std::array<int16_t, 32 * 3>> samples_;  // an odd number of 64-byte lines apart
  std::vector<void*> planes_;
  std::array<Point, 64> starts_, steps_;
  std::array<const double*, 64> start_of_, step_of_;
  std::array<int32_t, 64> counts_;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: uneven_stack PICTURE.pgm\n");
    return 2;
  }
  const std::vector<double> positions = slice_positions();
  const std::vector<int16_t> voxels = paint(positions);
  const Stack stack(voxels, positions);
  std::vector<int16_t> picture(kWidth * kHeight, 0);
  std::atomic<int> next{0}, worst{ZOX_STS_NO_ERROR};
  const int tiles = (kWidth / kTile) * (kHeight / kTile);
  // std::thread has the system's stack of 8 MiB; a General Trilinear call takes up to
  // ZOX_STACK_GENERAL_TRILINEAR.
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < std::max(1u, std::thread::hardware_concurrency()); ++i)
    threads.emplace_back([&] {
      Tile tile;
      for (int n; (n = next++) < tiles;) {
        const int status =
            tile.cast(stack, n % (kWidth / kTile) * kTile, n / (kWidth / kTile) * kTile, picture);
        if (status != ZOX_STS_NO_ERROR) worst = status;
      }
    });
  for (std::thread& thread : threads) thread.join();
  if (worst != ZOX_STS_NO_ERROR) {
    std::fprintf(stderr, "uneven_stack: %s\n", zox_GetStringStatus(worst));
    return 1;
  }
  std::vector<uint8_t> bytes(picture.size());
  zox_Volume_WindowLevel_16S_8U(picture.data(), bytes.data(), kWidth * kHeight, 128, 256, 0, 255);
  std::ofstream file(argv[1], std::ios::binary);
  file << "P5\n" << kWidth << ' ' << kHeight << "\n255\n";
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) {
    std::perror(argv[1]);
    return 1;
  }
  return 0;
}
