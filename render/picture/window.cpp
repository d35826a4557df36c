#include "picture/window.h"

#include <cmath>

namespace render {
namespace {

// Maxima tend to the upper end of the values: three quarters of the voxels may be black or darker, and one
// in ten thousand brighter than white.
constexpr double kBlackShare = 0.75, kWhiteShare = 0.9999;

// The smallest of -32768 .. 32768 whose shade is at least the given one.
int first_of_shade(const Shades& shades, int shade) {
  int low = INT16_MIN, high = INT16_MAX + 1;
  while (low < high) {
    const int middle = low + (high - low) / 2;
    if (shades.shade(middle) >= shade)
      high = middle;
    else
      low = middle + 1;
  }
  return low;
}

}  // namespace

Shades::Shades(double slope, double intercept, double center, double width)
    : slope_(slope),
      intercept_(intercept),
      low_(center - width / 2),
      high_(center + width / 2),
      width_(width) {
  require(std::isfinite(slope) && slope > 0 && std::isfinite(intercept),
          "sample_slope must be finite and above 0, and sample_intercept finite.");
  require(std::isfinite(low_) && std::isfinite(high_) && width > 0 && low_ < high_,
          "The window must be finite, and wide enough for its ends to differ.");
}

RENDER_IN_LANES void Shades::shade(const Lanes<int32_t>& samples, Lanes<uint8_t>& shades) const {
  alignas(64) Lanes<int32_t> found;
  for (size_t i = 0; i < kLanes; ++i) {
    const double value = samples[i] * slope_ + intercept_;
    const double between = (value - low_) / width_ * 255;
    found[i] = static_cast<int32_t>(value <= low_ ? 0 : value >= high_ ? 255 : between);
  }
  for (size_t i = 0; i < kLanes; ++i) shades[i] = static_cast<uint8_t>(found[i]);
}

void Shades::apply(const int16_t* samples, int64_t count, uint8_t* pixels) const {
  for (int64_t i = 0; i < count; ++i)
    pixels[i] = samples[i] == ZOX_RENDER_NOTHING ? uint8_t{0} : shade(samples[i]);
}

int Shades::last_black() const { return first_of_shade(*this, 1) - 1; }
int Shades::first_white() const { return first_of_shade(*this, 255); }

Window default_window(const Statistics& statistics, double slope, double intercept) {
  const int black = statistics.percentile(kBlackShare);
  int white = statistics.percentile(kWhiteShare);
  if (white == black) white = statistics.percentile(1);
  const double low = black * slope + intercept;
  const double width = white > black ? white * slope + intercept - low : slope;
  return {low + width / 2, width};
}

Window default_window(const Volume& volume, Work& work) {
  return default_window(volume.counted(work), volume.storage.slope, volume.storage.intercept);
}

}  // namespace render
