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
struct MovingLanes {
  Lanes<int> x, y, position, number;
  Lanes<int> x_step, y_step, position_step, number_step;
};

struct CursorLanes : MovingLanes {
  Lanes<int> last_number;  // the last in this region
  Lanes<int> first_slice;  // of this region
  Lanes<int> slice;        // of the next sample; kNoSlice when the ray is done

  void advance(int lane, int n) {
    x[lane] = wrap_add(x[lane], wrap_mul(n, x_step[lane]));
    y[lane] = wrap_add(y[lane], wrap_mul(n, y_step[lane]));
    position[lane] = wrap_add(position[lane], wrap_mul(n, position_step[lane]));
    number[lane] += n * number_step[lane];
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

}  // namespace
}  // namespace zox::ZOX_SET
