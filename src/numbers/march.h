// Marches a batch through a volume: the rays are the lanes and the sample index runs outermost,
// so that every plane is written in one stretch. Small batches, and the few rays left when the
// others have ended, go ray by ray with a run of samples as the lanes.
#pragma once

#include "numbers/cache_lines.h"
#include "numbers/fixed_point.h"
#include "numbers/lanes.h"
#include "zox_volume.h"

namespace zox::ZOX_SET {
namespace {

inline int advanced(int position, int step) { return wrap_add(position, step); }
inline double advanced(double position, double step) { return position + step; }

// One ray going on alone. The base alone accumulates the step; the offset is 0 for a walk that
// has none.
template <class Position>
struct RayWalk {
  Position offset[3];
  Position base[3];
  Position step[3];

  // The next n positions without the offset. The three sums run side by side: each waits for itself alone.
  void sums(int n, Axes<Position>& __restrict to) {
    for (int i = 0; i < n; ++i) {
      for (int axis = 0; axis < 3; ++axis) {
        to[axis][i] = base[axis];
        base[axis] = advanced(base[axis], step[axis]);
      }
    }
    pad_lanes(to, n);
  }

  void run(int n, Axes<Position>& to) {
    sums(n, to);
    for (int axis = 0; axis < 3; ++axis) {
      for (int i = 0; i < padded(n); ++i) to[axis][i] = advanced(offset[axis], to[axis][i]);
    }
  }
};

// Every lane accumulates a step of its own.
template <class PositionType>
struct OwnWalk {
  using Position = PositionType;
  Axes<Position> position;
  Axes<Position> step;

  const Axes<Position>& positions(int) { return position; }

  void advance(int n) {
    for (int axis = 0; axis < 3; ++axis) {
      for (int i = 0; i < padded(n); ++i) {
        position[axis][i] = advanced(position[axis][i], step[axis][i]);
      }
    }
  }

  void pad(int n) {
    pad_lanes(position, n);
    pad_lanes(step, n);
  }

  void move_lane(int from, int to) {
    for (int axis = 0; axis < 3; ++axis) {
      position[axis][to] = position[axis][from];
      step[axis][to] = step[axis][from];
    }
  }

  RayWalk<Position> lane(int i) const {
    return {{}, {position[0][i], position[1][i], position[2][i]}, {step[0][i], step[1][i], step[2][i]}};
  }
};

// A lane's position is its constant offset plus one base, which accumulates the shared step.
template <class PositionType>
struct SharedWalk {
  using Position = PositionType;
  Axes<Position> offset;
  Axes<Position> position;
  Position base[3];
  Position step[3];

  const Axes<Position>& positions(int n) {
    for (int axis = 0; axis < 3; ++axis) {
      for (int i = 0; i < padded(n); ++i) position[axis][i] = advanced(offset[axis][i], base[axis]);
    }
    return position;
  }

  void advance(int) {
    for (int axis = 0; axis < 3; ++axis) base[axis] = advanced(base[axis], step[axis]);
  }

  void pad(int n) { pad_lanes(offset, n); }

  void move_lane(int from, int to) {
    for (int axis = 0; axis < 3; ++axis) offset[axis][to] = offset[axis][from];
  }

  RayWalk<Position> lane(int i) const {
    return {
        {offset[0][i], offset[1][i], offset[2][i]}, {base[0], base[1], base[2]}, {step[0], step[1], step[2]}};
  }
};

// The rays still marching, by lane. A lane's ray never comes before that of the lane below.
struct Marchers {
  int ray[kLanes];
  int nsamples[kLanes];
  int n = 0;

  void add(int which, int samples) {
    ray[n] = which;
    nsamples[n] = samples;
    ++n;
  }

  int first_end() const {
    int end = nsamples[0];
    for (int i = 1; i < n; ++i) end = nsamples[i] < end ? nsamples[i] : end;
    return end;
  }

  bool side_by_side() const { return ray[n - 1] - ray[0] == n - 1; }

  // Closes the gaps that the rays of k samples leave.
  template <class Walk>
  void drop_ended(int k, Walk& walk) {
    int kept = 0;
    for (int i = 0; i < n; ++i) {
      if (nsamples[i] <= k) continue;
      if (kept != i) {
        ray[kept] = ray[i];
        nsamples[kept] = nsamples[i];
        walk.move_lane(i, kept);
      }
      ++kept;
    }
    n = kept;
  }
};

// Below this many rays a stage costs about as much as it would for a full vector.
constexpr int kFewRays = 8;

template <class Element>
void store_lanes(const Lanes<Element>& values, const Marchers& rays, bool side_by_side, Element* plane) {
  if (!side_by_side) {
    for (int i = 0; i < rays.n; ++i) plane[rays.ray[i]] = values[i];
  } else if (rays.n == kLanes) {
    __builtin_memcpy(plane + rays.ray[0], values.at, sizeof values);
  } else {
    for (int i = 0; i < rays.n; ++i) plane[rays.ray[0] + i] = values[i];
  }
}

// sampler.place_next() takes the positions of sample k, sampler.values() gives its values, up to
// kRing - 1 samples later. Ends with the rays' last samples written.
template <class Element, class Walk, class Sampler>
void march(Marchers& rays, Walk& walk, void* const* planes, Sampler& sampler) {
  int k = 0;
  alignas(64) Lanes<Element> values;
  while (rays.n >= kFewRays) {
    bool side_by_side = rays.side_by_side();
    walk.pad(rays.n);
    const int end = rays.first_end();
    const bool asked = rays.n >= kFewToAsk && end - k > Sampler::kRing;
    for (int placed = k; k < end; ++k) {
      for (; placed < end && placed - k < Sampler::kRing; ++placed) {
        sampler.place_next(placed, walk.positions(rays.n), rays.n, asked);
        walk.advance(rays.n);
      }
      sampler.values(k, rays.n, values.at);
      store_lanes(values, rays, side_by_side, static_cast<Element*>(planes[k]));
    }
    rays.drop_ended(k, walk);
  }
  for (int lane = 0; lane < rays.n; ++lane) {
    RayWalk<typename Walk::Position> ray = walk.lane(lane);
    for (int first = k, n; first < rays.nsamples[lane]; first += n) {
      int left = rays.nsamples[lane] - first;
      n = left < kLanes ? left : kLanes;
      Axes<typename Walk::Position> positions;
      ray.run(n, positions);
      sampler.place_next(0, positions, n, n >= kFewToAsk);
      sampler.values(0, n, values.at);
      for (int i = 0; i < n; ++i) static_cast<Element*>(planes[first + i])[rays.ray[lane]] = values[i];
    }
  }
}

}  // namespace
}  // namespace zox::ZOX_SET
