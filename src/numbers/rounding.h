// The two ways from a double to fixed point.
#pragma once

namespace zox {

enum class Rounding {
  kTruncated,  // toward zero
  kRounded,    // 0.5 added, then toward zero, also for negative values
};

}  // namespace zox
