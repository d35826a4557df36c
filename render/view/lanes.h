// The rays of a tile, one a lane: the same steps for all of them, which compilers turn into vectors.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace render {

// Loops over lanes are compiled for several kinds of processors, and the system takes the widest: additions,
// products, quotients and roots are the same in all. Programs that are sanitized, and compilers that cannot
// clone, have one kind.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__) && \
    !defined(__SANITIZE_THREAD__)
#define RENDER_IN_LANES __attribute__((target_clones("avx512f", "avx2", "default")))
#else
#define RENDER_IN_LANES
#endif

inline constexpr size_t kLanes = 64;
template <class Number>
using Lanes = std::array<Number, kLanes>;

// Sample n lies at middle + n * step.
struct Line {
  std::array<double, 3> middle, step;
};

struct alignas(64) LineLanes {
  std::array<Lanes<double>, 3> middle, step;
  Line of(size_t lane) const {
    Line line;
    for (size_t a = 0; a < 3; ++a) {
      line.middle[a] = middle[a][lane];
      line.step[a] = step[a][lane];
    }
    return line;
  }
  void set(size_t lane, const Line& line) {
    for (size_t a = 0; a < 3; ++a) {
      middle[a][lane] = line.middle[a];
      step[a][lane] = line.step[a];
    }
  }
};

struct Stretch {
  double first = 0, last = -1;
  bool empty() const { return first > last; }
};

// Numbers of samples, the first and the last; a lane without any holds kBeyond and -kBeyond.
struct alignas(64) StretchLanes {
  static constexpr int kBeyond = 1 << 25;  // no sample has such a number
  Lanes<int32_t> first, last;
  bool empty(size_t lane) const { return first[lane] > last[lane]; }
  void set(size_t lane, const Stretch& samples) {
    first[lane] = samples.empty() ? kBeyond : static_cast<int32_t>(samples.first);
    last[lane] = samples.empty() ? -kBeyond : static_cast<int32_t>(samples.last);
  }
  void clear() {
    first.fill(kBeyond);
    last.fill(-kBeyond);
  }
};

}  // namespace render
