// The clock and the average of all timings.
#pragma once

#include <time.h>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace bench {

// Time that this thread spent on a processor: others that share the machine hardly disturb it.
inline double cpu_seconds() {
  timespec now;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

inline double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace bench
