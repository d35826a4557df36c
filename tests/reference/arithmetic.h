// The number rules that every operation shares, and the one way to an output element.
#pragma once

#include <emmintrin.h>

#include <vector>

#include "zox_volume.h"

namespace reference {

// Truncation toward zero by the processor's own conversion: what no 32-bit integer holds becomes
// 0x80000000, which a C++ cast would leave undefined.
inline int32_t truncate(double value) { return _mm_cvttsd_si32(_mm_set_sd(value)); }

// "Rounded" means this and nothing finer: half is added, then the fraction is cut off toward zero,
// so that -0.7 becomes 0 and -1.7 becomes -1.
inline int32_t add_half_and_truncate(double value) { return truncate(value + 0.5); }

// Fixed-point sums wrap in 32 bits.
inline int32_t wrap_add(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
inline int32_t wrap_subtract(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

// The absolute value as a 32-bit integer: the smallest has no opposite and stays as it is.
inline int32_t absolute(int32_t a) { return a < 0 ? wrap_subtract(0, a) : a; }

template <typename Element>
void write_sample(const zox_Rays& rays, int32_t k, int32_t r, Element value) {
  static_cast<Element*>(rays.planes[k])[r] = value;
}

// Which voxel each sample needs, for tests that have yet to make the volume: while there is a list, samples
// are noted in it, and nothing is read or written. Of eight voxels the lowest is noted; z of a slice stack
// is the slice. What benchmarks measure against does not even ask.
struct Place {
  int32_t ray, x, y, z;
};
#ifdef ZOX_NOTE_PLACES
inline thread_local std::vector<Place>* noted_places = nullptr;
inline bool note(const Place& place) {
  if (noted_places != nullptr) noted_places->push_back(place);
  return noted_places != nullptr;
}
#else
inline bool note(const Place&) { return false; }
#endif
// Below zero the conversion would round up to a voxel that the layout does not promise.
inline bool note(int32_t ray, const double position[3]) {
  const auto voxel = [position](int axis) { return position[axis] < 0 ? -1 : truncate(position[axis]); };
  return note({ray, voxel(0), voxel(1), voxel(2)});
}

}  // namespace reference
