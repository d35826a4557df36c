// One cursor a ray: where each stands, as lanes in memory and as vectors in registers.
#pragma once

#include "numbers/lanes.h"
#include "sets/set.h"
#include "stack/region_walk.h"
#include "stack/staged_samples.h"

namespace zox::ZOX_SET {
namespace {

constexpr int kNoSlice = INT32_MAX;

// The lanes' next samples, and what leads from one to the next.
struct CursorLanes {
  Lanes<int> x, y, position, number;
  Lanes<int> x_step, y_step, position_step, number_step;
  Lanes<int> last_number;  // the last in this region
  Lanes<int> first_slice;  // of this region
  Lanes<int> slice;        // of the next sample; kNoSlice when the ray is done

  void advance_first(int n) {
    x[0] = wrap_add(x[0], wrap_mul(n, x_step[0]));
    y[0] = wrap_add(y[0], wrap_mul(n, y_step[0]));
    position[0] = wrap_add(position[0], wrap_mul(n, position_step[0]));
    number[0] += n * number_step[0];
  }
};

// What moves of one vector's lanes.
struct CursorGroup {
  Vector x, y, position, number, slice;

  CursorGroup(const CursorLanes& c, int group)
      : x(load_vector(&c.x[group])),
        y(load_vector(&c.y[group])),
        position(load_vector(&c.position[group])),
        number(load_vector(&c.number[group])),
        slice(load_vector(&c.slice[group])) {}
  void put_back(CursorLanes& c, int group) const {
    store_vector(&c.x[group], x);
    store_vector(&c.y[group], y);
    store_vector(&c.position[group], position);
    store_vector(&c.number[group], number);
    store_vector(&c.slice[group], slice);
  }
};

// The next n samples of lane 0.
template <SliceRules rules>
void stage_run(const CursorLanes& c, int n, StagedSamples& stage) {
  const int x = c.x[0], y = c.y[0], position = c.position[0], number = c.number[0],
            first_slice = c.first_slice[0];
  const int x_step = c.x_step[0], y_step = c.y_step[0], position_step = c.position_step[0];
  const int number_step = c.number_step[0];
  for (int i = 0; i < n; ++i) {
    stage.x[i] = wrap_add(x, wrap_mul(i, x_step));
    stage.y[i] = wrap_add(y, wrap_mul(i, y_step));
    int at = wrap_add(position, wrap_mul(i, position_step));
    stage.position[i] = at;
    stage.place[i] = slice_of<rules>(at, first_slice);
    stage.number[i] = number + i * number_step;
  }
}

}  // namespace
}  // namespace zox::ZOX_SET
