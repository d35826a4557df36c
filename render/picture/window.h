// Which values are shown from black to white.
#pragma once

#include <cstdint>

#include "view/lanes.h"
#include "volume/volume.h"

namespace render {

// Checks and keeps a window of values for samples of a volume.
class Shades {
 public:
  Shades(double slope, double intercept, double center, double width);

  uint8_t shade(int sample) const {
    const double value = sample * slope_ + intercept_;
    if (value <= low_) return 0;
    if (value >= high_) return 255;
    return static_cast<uint8_t>((value - low_) / width_ * 255);
  }
  void shade(const Lanes<int32_t>& samples, Lanes<uint8_t>& shades) const;
  // NOTHING becomes 0.
  void apply(const int16_t* samples, int64_t count, uint8_t* pixels) const;
  // The largest sample that is black and the smallest that is white; beyond 16 bits where there is none.
  int last_black() const;
  int first_white() const;

 private:
  double slope_, intercept_, low_, high_, width_;
};

Window default_window(const Volume& volume, Work& work);
Window default_window(const Statistics& statistics, double slope, double intercept);

}  // namespace render
