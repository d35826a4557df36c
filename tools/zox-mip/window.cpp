#include "window.h"

#include <zox_volume.h>

#include <algorithm>
#include <cmath>

#include "failure.h"

namespace zox_mip {
namespace {

// Maxima tend to the upper end of the values: three quarters of the voxels may be black or darker, and one
// in ten thousand brighter than white.
constexpr double kBlackShare = 0.75;
constexpr double kWhiteShare = 0.9999;

constexpr int kMinWidth = 2;
constexpr int kMaxWidth = INT16_MAX;

template <class Voxel>
std::vector<uint64_t> histogram(const Volume& volume) {
  std::vector<uint64_t> counts(65536);
  const Voxel* voxel = reinterpret_cast<const Voxel*>(volume.voxels.get());
  for (size_t i = 0; i < volume.count(); ++i) ++counts[static_cast<size_t>(voxel[i] - INT16_MIN)];
  return counts;
}

// The smallest value that a share of all voxels does not exceed.
int percentile(const std::vector<uint64_t>& counts, size_t total, double share) {
  const double wanted = share * static_cast<double>(total);
  uint64_t passed = 0;
  for (size_t bin = 0; bin < counts.size(); ++bin) {
    passed += counts[bin];
    if (static_cast<double>(passed) >= wanted) return static_cast<int>(bin) + INT16_MIN;
  }
  return INT16_MAX;
}

// The range that the library accepts: both edges' neighbours inside must be 16-bit values.
bool is_possible(double center, double width) {
  return width >= kMinWidth && width <= kMaxWidth && center - width / 2 >= INT16_MIN &&
         center + width / 2 <= INT16_MAX;
}

StoredWindow from_percentiles(const Volume& volume) {
  const std::vector<uint64_t> counts =
      volume.type == VoxelType::kBytes ? histogram<uint8_t>(volume) : histogram<int16_t>(volume);
  const int black = percentile(counts, volume.count(), kBlackShare);
  const int white = percentile(counts, volume.count(), kWhiteShare);
  const int width = std::clamp(white - black, kMinWidth, kMaxWidth);
  const int half = width / 2 + 1;
  return {std::clamp(white - width / 2, INT16_MIN + half, INT16_MAX - half), width};
}

}  // namespace

StoredWindow choose_window(const std::optional<Window>& wanted, const Volume& volume) {
  if (!wanted) return from_percentiles(volume);
  const double center = std::round((wanted->center - volume.offset) / volume.scale);
  const double width = std::round(wanted->width / volume.scale);
  if (!is_possible(center, width))
    fail(
        "The window of --window does not fit: it must be 2 to 32767 steps of the stored values wide and "
        "lie within 16 bits with sign.");
  return {static_cast<int>(center), static_cast<int>(width)};
}

std::vector<uint8_t> apply_window(const StoredWindow& window, const std::vector<int16_t>& maxima) {
  std::vector<uint8_t> grey(maxima.size());
  const int status = zox_Volume_WindowLevel_16S_8U(
      maxima.data(), grey.data(), static_cast<int>(maxima.size()), window.center, window.width, 0, 255);
  if (status != ZOX_STS_NO_ERROR)
    fail(std::string("The library refused the window: ") + zox_GetStringStatus(status) + ".");
  return grey;
}

}  // namespace zox_mip
