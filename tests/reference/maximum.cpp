// The largest sample of every ray, of all samples or of those that a mask selects by their index.
#include "reference.h"

namespace reference {
namespace {

// An odd negative number of rays counts as one ray.
int32_t rays_to_process(int32_t nrays) {
  if (nrays > 0) return nrays;
  return (nrays & 1) != 0 ? 1 : 0;
}

// A ray of which no sample takes part yields the empty value.
template <typename Sample, typename Selects>
int find_max(const zox_Rays& rays, Sample empty, Selects selects, Sample* maxima) {
  const int32_t count = rays_to_process(rays.nrays);
  for (int32_t r = 0; r < count; ++r) {
    Sample largest = empty;
    for (int32_t k = 0; k < rays.nsamples[r]; ++k) {
      const Sample sample = static_cast<const Sample*>(rays.planes[k])[r];
      if (selects(k) && sample > largest) largest = sample;
    }
    maxima[r] = largest;
  }
  return ZOX_STS_NO_ERROR;
}

constexpr uint8_t kEmpty8 = 0;
constexpr int16_t kEmpty16 = -32768;

auto every_sample() {
  return [](int32_t) { return true; };
}

// The most significant bit of a byte stands for the first of its eight samples.
auto by_bit(const uint8_t* mask) {
  return [mask](int32_t k) { return ((mask[k / 8] >> (7 - k % 8)) & 1) != 0; };
}

// Only the low byte of the threshold counts.
auto above_threshold(const uint8_t* mask, int threshold) {
  return [mask, limit = static_cast<uint8_t>(threshold)](int32_t k) { return mask[k] > limit; };
}

}  // namespace

int find_max_8u(const zox_Rays* rays, uint8_t* maxima) {
  return find_max(*rays, kEmpty8, every_sample(), maxima);
}
int find_max_16s(const zox_Rays* rays, int16_t* maxima) {
  return find_max(*rays, kEmpty16, every_sample(), maxima);
}
int find_max_bmask_8u(const zox_Rays* rays, const uint8_t* mask, uint8_t* maxima) {
  return find_max(*rays, kEmpty8, by_bit(mask), maxima);
}
int find_max_bmask_16s(const zox_Rays* rays, const uint8_t* mask, int16_t* maxima) {
  return find_max(*rays, kEmpty16, by_bit(mask), maxima);
}
int find_max_cmask_8u(const zox_Rays* rays, const uint8_t* mask, int threshold, uint8_t* maxima) {
  return find_max(*rays, kEmpty8, above_threshold(mask, threshold), maxima);
}
int find_max_cmask_16s(const zox_Rays* rays, const uint8_t* mask, int threshold, int16_t* maxima) {
  return find_max(*rays, kEmpty16, above_threshold(mask, threshold), maxima);
}

}  // namespace reference
