// Small valid volumes and batches which a test then spoils in one place.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "zox_volume.h"

namespace checker_test {

using Point = std::array<double, 3>;

// Three rays of 4, 2 and 3 samples with their own starts and one common step. Planes have room for
// 16-bit elements, the row of plane pointers for two more than the samples need.
struct Batch {
  static constexpr int kRays = 3;
  static constexpr int kPlanes = 6;

  Batch(Point first_start, Point step);
  Batch(const Batch&) = delete;
  Batch& operator=(const Batch&) = delete;

  std::array<Point, kRays> starts;
  std::array<Point, kRays> steps;
  std::array<int32_t, kRays> counts = {4, 2, 3};
  std::array<const double*, kRays> start_pointers;
  std::array<const double*, kRays> step_pointers;
  std::vector<std::array<uint8_t, 2 * kRays>> plane_data;
  std::vector<void*> planes;
  zox_Rays rays;
};

// 64 x 64 voxels, 32 deep; rays start around (10, 20, 8) and move by (0.5, 0.25, 1).
struct BlockedScene : Batch {
  BlockedScene();
  std::vector<uint8_t> voxels;
  zox_Volume volume;
};

// 16 columns, 12 rows, 8 slices and one slice more for the neighbour of the last; z runs from 0 to 8
// in one region, or from 0 to 4 and 4 to 12 in two, the second at half a slice a unit. Rays start
// around (3, 4, 1) and move by (0.5, 0.25, 1).
struct StackScene : Batch {
  explicit StackScene(int regions);
  static constexpr int kColumns = 16;
  static constexpr int kRows = 12;
  static constexpr int kSlices = 8;
  std::vector<std::vector<uint8_t>> slice_data;
  std::vector<const void*> slices;
  std::vector<int32_t> rowoffs;
  std::vector<int32_t> regslice;
  std::vector<double> regbounds;
  std::vector<double> regscale;
  zox_Volume volume;
};

using RayCast = int (*)(const zox_Volume*, const zox_Rays*);
struct NamedCast {
  const char* name;
  RayCast call;
};
// Both names of every ray caster.
extern const std::vector<NamedCast> kBlockedCasts;
extern const std::vector<NamedCast> kGeneralCasts;

}  // namespace checker_test
