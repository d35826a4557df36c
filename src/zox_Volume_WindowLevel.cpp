#include "export.h"
#include "operations/table.h"

int zox_Volume_WindowLevel_16S_8U(const int16_t* src, uint8_t* dst, int len, int center, int width,
                                  int outmin, int outmax) {
  return zox::pick().window_level_16s_8u(src, dst, len, center, width, outmin, outmax);
}

ZOX_SECOND_NAME(zox_Volume_WindowLevel_16S_8U);
