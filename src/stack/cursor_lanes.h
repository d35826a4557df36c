// One cursor a ray: where each stands, as lanes in memory and as vectors in registers.
#pragma once

#include "numbers/lanes.h"
#include "sets/vectors.h"

namespace zox::ZOX_SET {
namespace {

constexpr int kNoSlice = INT32_MAX;

// The lanes' next samples, and what leads from one to the next.
struct CursorLanes {
  Lanes<int> x, y, position, node;
  Lanes<int> x_step, y_step, position_step, node_step;
  Lanes<int> last_node;    // the last in this region
  Lanes<int> first_slice;  // of this region
  Lanes<int> slice;        // of the next sample; kNoSlice when the ray is done
};

// What moves of one vector's lanes.
struct CursorGroup {
  Vector x, y, position, node, slice;

  CursorGroup(const CursorLanes& c, int group)
      : x(load_vector(&c.x[group])),
        y(load_vector(&c.y[group])),
        position(load_vector(&c.position[group])),
        node(load_vector(&c.node[group])),
        slice(load_vector(&c.slice[group])) {}
  void put_back(CursorLanes& c, int group) const {
    store_vector(&c.x[group], x);
    store_vector(&c.y[group], y);
    store_vector(&c.position[group], position);
    store_vector(&c.node[group], node);
    store_vector(&c.slice[group], slice);
  }
};

}  // namespace
}  // namespace zox::ZOX_SET
