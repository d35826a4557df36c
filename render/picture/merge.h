// Two pictures of parts as one.
#pragma once

#include <cstdint>

#include "picture/order.h"

namespace render {

// The winners of each pixel go to `into`; of equal samples the nearer one. Depths: of both or of neither.
void merge(const Order& order, int64_t count, int16_t* into, int32_t* into_depths, const int16_t* other,
           const int32_t* other_depths);

}  // namespace render
