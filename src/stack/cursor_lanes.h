// One cursor a ray: where each stands, as lanes in memory and as vectors in registers.
#pragma once

#include "numbers/fixed_point.h"
#include "stack/stack_view.h"

namespace zox::ZOX_SET {
namespace {

constexpr int kNoSlice = INT32_MAX;

// A sample a lane, or what leads from one to the next.
struct SampleLanes {
  Lanes<int> x, y, position, number;

  void move_lane(int from, int to);
};
constexpr Lanes<int> SampleLanes::*kSampleFields[] = {&SampleLanes::x, &SampleLanes::y,
                                                      &SampleLanes::position, &SampleLanes::number};
inline void SampleLanes::move_lane(int from, int to) {
  for (auto field : kSampleFields) (this->*field)[to] = (this->*field)[from];
}

// One vector of these.
struct SampleVectors {
  Vector x, y, position, number;

  static SampleVectors of(const SampleLanes& from, int lane) {
    return {load<Vector>(&from.x[lane]), load<Vector>(&from.y[lane]), load<Vector>(&from.position[lane]),
            load<Vector>(&from.number[lane])};
  }
  static SampleVectors all(const SampleLanes& from, int lane) {
    return {broadcast(from.x[lane]), broadcast(from.y[lane]), broadcast(from.position[lane]),
            broadcast(from.number[lane])};
  }
  void put_back(SampleLanes& to, int lane) const {
    store(&to.x[lane], x);
    store(&to.y[lane], y);
    store(&to.position[lane], position);
    store(&to.number[lane], number);
  }
  void move(const SampleVectors& by) {
    x += by.x;
    y += by.y;
    position += by.position;
    number += by.number;
  }
  void move_where(Mask on, const SampleVectors& by) {
    x = add_where(on, x, by.x);
    y = add_where(on, y, by.y);
    position = add_where(on, position, by.position);
    number = add_where(on, number, by.number);
  }
};

struct CursorLanes {
  SampleLanes at, step;
  Lanes<int> last_number;  // the last in this region
  Lanes<int> first_slice;  // of this region
  Lanes<int> slice;        // of the next sample; kNoSlice when the ray is done
  Lanes<int> next_region;  // the one to enter after this
  Lanes<int> trace;        // the ray's lane in Traces

  // Leaves out the rays that are done; how many of n are not.
  int drop_done(int n) {
    int kept = 0;
    for (int i = 0; i < n; ++i) {
      if (slice[i] == kNoSlice) continue;
      at.move_lane(i, kept);
      step.move_lane(i, kept);
      for (auto field : kOtherFields) (this->*field)[kept] = (this->*field)[i];
      ++kept;
    }
    for (int i = kept; i < n; ++i) slice[i] = kNoSlice;
    return kept;
  }

 private:
  static constexpr Lanes<int> CursorLanes::*kOtherFields[] = {&CursorLanes::last_number,
                                                              &CursorLanes::first_slice, &CursorLanes::slice,
                                                              &CursorLanes::next_region, &CursorLanes::trace};
};

}  // namespace
}  // namespace zox::ZOX_SET
