// What many ranks have done, told by the root.
#pragma once

#include <chrono>
#include <cstdint>
#include <ctime>
#include <utility>

#include "options.h"
#include "spread_volume.h"

namespace zox_mip_mpi {

// Time of this rank: how long it took, and for how long processors worked.
struct Lap {
  double wall = 0, processors = 0;
};

class Clock {
 public:
  Lap lap() {
    const Lap now = time();
    const Lap before = std::exchange(last_, now);
    return {now.wall - before.wall, now.processors - before.processors};
  }

 private:
  static Lap time() {
    return {std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(),
            static_cast<double>(std::clock()) / CLOCKS_PER_SEC};
  }
  Lap last_ = time();
};

struct Totals {
  int64_t samples = 0, cast = 0;
  int64_t reduced = 0;  // bytes that every rank gave to reductions
  Lap read, volume, render;
};

// By all ranks together.
void report(const Group& group, const SpreadVolume& volume, const zox_mip::Options& options,
            const Totals& totals);

}  // namespace zox_mip_mpi
