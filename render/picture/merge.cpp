#include "picture/merge.h"

namespace render {

void merge(const Order& order, int64_t count, int16_t* into, int32_t* into_depths, const int16_t* other,
           const int32_t* other_depths) {
  for (int64_t i = 0; i < count; ++i) {
    if (other[i] == ZOX_RENDER_NOTHING) continue;
    const bool none = into[i] == ZOX_RENDER_NOTHING;
    const bool wins = none || order.better(other[i], into[i]);
    const bool nearer = into_depths && other[i] == into[i] && other_depths[i] < into_depths[i];
    if (!wins && !nearer) continue;
    into[i] = other[i];
    if (into_depths) into_depths[i] = other_depths[i];
  }
}

}  // namespace render
