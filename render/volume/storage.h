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

// Bricks keep 2 * (sample - middle). Their operations sum eight products in doubles, whose weights may sum to
// a little less or more than 1, and cut the sum toward zero: eight voxels of 2x can give 2x or the number
// next to it toward zero. Halving away from zero makes x of both; and since samples between unlike voxels are
// off by as little, none leaves the range of its voxels. All are so rounded to the nearest. The range must
// not pass 15 bits.
inline int16_t to_guarded(int sample, int middle) { return static_cast<int16_t>(2 * (sample - middle)); }
inline int16_t from_guarded(int16_t stored) { return static_cast<int16_t>((stored + (stored > 0)) >> 1); }
inline constexpr int kGuardedRange = 32767;
inline int guard_middle(const Storage& storage) { return storage.lowest + 16384; }

// range: the smallest and the largest voxel. fine: 7 more bits for types of 8 bits. steps: into how many
// steps the range of a type that is not kept exactly may be cut.
Storage choose_storage(const Array& array, double lowest, double highest, bool fine, int steps);

}  // namespace render
