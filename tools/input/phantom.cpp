#include <sys/mman.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <new>
#include <numbers>

#include "format.h"

namespace zox::input {
namespace {

using Point = std::array<double, 3>;

constexpr std::array<int32_t, 3> kSize = {160, 192, 112};
constexpr Point kSpacing = {1.2, 1.0, 1.6};
constexpr int16_t kAir = -1000;

struct Ellipsoid {
  Point centre;  // millimetres from the middle of the volume
  Point radius;
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
double squared_distance(const Ellipsoid& shape, const Point& point) {
  double sum = 0;
  for (size_t axis = 0; axis < 3; ++axis) {
    const double share = (point[axis] - shape.centre[axis]) / shape.radius[axis];
    sum += share * share;
  }
  return sum;
}

bool is_inside(const Vessel& vessel, const Point& point) {
  if (point[2] < kVesselBottom || point[2] > kVesselTop) return false;
  const double angle = 2 * std::numbers::pi * point[2] / kVesselTurn + vessel.phase;
  const double dx = point[0] - kVesselOrbit * std::cos(angle);
  const double dy = point[1] - kVesselOrbit * std::sin(angle);
  return dx * dx + dy * dy <= kVesselRadius * kVesselRadius;
}

int16_t value_at(const Point& point) {
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

Scan make_phantom() {
  Scan scan;
  scan.array = empty_array();
  scan.array.type = ZOX_RENDER_INT16;
  size_t bytes = sizeof(int16_t);
  for (size_t axis = 0; axis < 3; ++axis) {
    scan.array.size[axis] = kSize[axis];
    scan.array.axes[axis][axis] = kSpacing[axis];
    scan.array.origin[axis] = -(kSize[axis] - 1) / 2.0 * kSpacing[axis];
    scan.array.strides[axis] = static_cast<int64_t>(bytes);
    bytes *= static_cast<size_t>(kSize[axis]);
  }
  void* memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  scan.memory = Mapping(memory, Unmap{bytes});
  scan.array.data = memory;
  int16_t* voxel = static_cast<int16_t*>(memory);
  for (int z = 0; z < kSize[2]; ++z)
    for (int y = 0; y < kSize[1]; ++y)
      for (int x = 0; x < kSize[0]; ++x)
        *voxel++ =
            value_at({(x - (kSize[0] - 1) / 2.0) * kSpacing[0], (y - (kSize[1] - 1) / 2.0) * kSpacing[1],
                      (z - (kSize[2] - 1) / 2.0) * kSpacing[2]});
  return scan;
}

}  // namespace zox::input
