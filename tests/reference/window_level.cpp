// Signed 16-bit values to display bytes by window and level.
#include "arithmetic.h"
#include "reference.h"

namespace reference {

int window_level_16s_8u(const int16_t* src, uint8_t* dst, int len, int center_argument, int width_argument,
                        int outmin_argument, int outmax_argument) {
  // Only the low bits of the narrow arguments count.
  const int32_t center = static_cast<int16_t>(center_argument);
  const int32_t width = static_cast<int16_t>(width_argument);
  const int32_t outmin = static_cast<uint8_t>(outmin_argument);
  const int32_t outmax = static_cast<uint8_t>(outmax_argument);
  const int32_t lo = ((2 * center - width) >> 1) + 1;  // first and last value inside the window
  const int32_t hi = ((2 * center + width) >> 1) - 1;
  if (width <= 0 || outmax < outmin || lo < -32768 || hi > 32767 || lo > hi) return ZOX_STS_BAD_PARAM;

  const double slope = static_cast<double>(outmax - outmin) / width;
  const double offset = outmin - (center - 0.5 * width) * slope;
  for (int i = 0; i < len; ++i) {
    const int32_t value = src[i];
    int32_t mapped = truncate(value * slope + offset);
    if (value < lo) mapped = outmin;
    if (value > hi) mapped = outmax;
    dst[i] = static_cast<uint8_t>(mapped);
  }
  return ZOX_STS_NO_ERROR;
}

}  // namespace reference
