#include <cmath>
#include <cstdint>
#include <numbers>

#include "volume.h"

namespace zox_mip {
namespace {

constexpr std::array<int, 3> kSize = {160, 192, 112};
constexpr Vec3 kSpacing = {1.2, 1.0, 1.6};
constexpr int16_t kAir = -1000;

struct Ellipsoid {
  Vec3 centre;  // millimetres from the middle of the volume
  Vec3 radius;
  int16_t value;    // at the surface
  double rise = 0;  // to the centre, with the square of the distance
};

// In the order of painting: a later shape covers an earlier one. The ear ring is on the left side
// only, so that a mirrored picture shows.
constexpr Ellipsoid kShapes[] = {
    {{0, 4, 0}, {74, 88, 84}, 40},        // skin and flesh
    {{0, -86, -18}, {9, 9, 12}, 40},      // nose
    {{0, 4, 6}, {67, 80, 74}, 350},       // skull
    {{0, 4, 6}, {61, 74, 68}, 100, 500},  // brain
    {{28, -74, -10}, {14, 16, 12}, 20},   // left orbit
    {{-28, -74, -10}, {14, 16, 12}, 20},  // right orbit
    {{73, 10, -15}, {6, 6, 6}, 1000},     // left ear ring
};

// Two vessels winding upwards through the brain, half a turn apart.
struct Vessel {
  double phase;
  int16_t value;
};
constexpr Vessel kVessels[] = {{std::numbers::pi, 800}, {0, 1000}};
constexpr double kVesselBottom = -48;
constexpr double kVesselTop = 60;
constexpr double kVesselTurn = 54;  // millimetres of height for one turn
constexpr double kVesselOrbit = 32;
constexpr double kVesselRadius = 4;

// 0 at the centre, 1 at the surface.
double squared_distance(const Ellipsoid& shape, const Vec3& point) {
  double sum = 0;
  for (int axis = 0; axis < 3; ++axis) {
    const double share = (point[axis] - shape.centre[axis]) / shape.radius[axis];
    sum += share * share;
  }
  return sum;
}

bool is_inside(const Vessel& vessel, const Vec3& point) {
  if (point[2] < kVesselBottom || point[2] > kVesselTop) return false;
  const double angle = 2 * std::numbers::pi * point[2] / kVesselTurn + vessel.phase;
  const double dx = point[0] - kVesselOrbit * std::cos(angle);
  const double dy = point[1] - kVesselOrbit * std::sin(angle);
  return dx * dx + dy * dy <= kVesselRadius * kVesselRadius;
}

int16_t value_at(const Vec3& point) {
  int16_t value = kAir;
  for (const Ellipsoid& shape : kShapes) {
    const double squared = squared_distance(shape, point);
    if (squared <= 1) value = static_cast<int16_t>(shape.value + shape.rise * (1 - squared));
  }
  for (const Vessel& vessel : kVessels)
    if (is_inside(vessel, point)) value = vessel.value;
  return value;
}

}  // namespace

Volume make_phantom() {
  Volume volume;
  volume.size = kSize;
  for (int axis = 0; axis < 3; ++axis) volume.axes[static_cast<size_t>(axis)][axis] = kSpacing[axis];
  volume.voxels = std::make_unique_for_overwrite<std::byte[]>(volume.count() * sizeof(int16_t));
  int16_t* voxel = reinterpret_cast<int16_t*>(volume.voxels.get());
  for (int z = 0; z < kSize[2]; ++z)
    for (int y = 0; y < kSize[1]; ++y)
      for (int x = 0; x < kSize[0]; ++x)
        *voxel++ =
            value_at({(x - (kSize[0] - 1) / 2.0) * kSpacing[0], (y - (kSize[1] - 1) / 2.0) * kSpacing[1],
                      (z - (kSize[2] - 1) / 2.0) * kSpacing[2]});
  return volume;
}

}  // namespace zox_mip
