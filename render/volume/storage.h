// How the values of an array become samples of 16 bits with sign.
#pragma once

#include <cstdint>

#include "volume/array.h"

namespace render {

// The sample that stands for nothing is never a voxel's.
inline constexpr int kLowestSample = -32767, kHighestSample = 32767;

// A voxel v of the array, negated where the slope is negative (so that larger samples are larger values),
// becomes the sample round((v - base) / step) + first. step is a power of two: whole numbers and binary
// fractions are kept exactly wherever their range allows it, whatever the type, and how values are kept
// depends on nothing but type, range and layout.
struct Storage {
  bool negated = false;
  double step = 1, base = 0;
  int first = 0;
  int lowest = 0, highest = 0;      // samples of the smallest and largest voxel
  double slope = 1, intercept = 0;  // value = sample * slope + intercept

  int sample(double voxel) const;
  double value(int sample) const { return sample * slope + intercept; }
};

// Bricks keep 2 * (sample - middle) + 1: their operations may come out one too small in magnitude, since
// eight weights in doubles can sum to a little less than 1. Halving swallows that, and rounds to the
// nearest. With x = sample - middle, a constant 2x + 1 gives 2x + 1 or the number next to it toward zero;
// both become x again. The range must not pass 15 bits.
inline int16_t to_guarded(int sample, int middle) { return static_cast<int16_t>(2 * (sample - middle) + 1); }
inline int from_guarded(int stored, int middle) {
  return ((stored >= 0 ? stored : stored - 1) >> 1) + middle;
}
inline constexpr int kGuardedRange = 32767;
inline int guard_middle(const Storage& storage) { return storage.lowest + 16384; }

// range: the smallest and the largest voxel. fine: 7 more bits for types of 8 bits. steps: into how many
// steps the range of a type that is not kept exactly may be cut.
Storage choose_storage(const Array& array, double lowest, double highest, bool fine, int steps);

}  // namespace render
