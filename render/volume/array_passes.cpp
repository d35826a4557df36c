#include "volume/array_passes.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

namespace render {
namespace {

template <class Voxel>
Voxel load(const std::byte* at) {
  Voxel voxel;
  std::memcpy(&voxel, at, sizeof voxel);
  return voxel;
}

// Calls use(x, voxel) along a row; the packed case stands alone so that it is vectorised.
template <class Voxel, class Use>
void along_row(const std::byte* row, int64_t column_bytes, int count, Use use) {
  if (column_bytes == sizeof(Voxel))
    for (int x = 0; x < count; ++x) use(x, load<Voxel>(row + x * static_cast<int64_t>(sizeof(Voxel))));
  else
    for (int x = 0; x < count; ++x) use(x, load<Voxel>(row + x * column_bytes));
}

template <class Voxel>
void widen(const Array& array, int z, Range& range) {
  constexpr bool is_real = std::is_floating_point_v<Voxel>;
  Voxel low = std::numeric_limits<Voxel>::max(), high = std::numeric_limits<Voxel>::lowest();
  for (int y = 0; y < array.size[1]; ++y)
    along_row<Voxel>(array.row(y, z), array.column_bytes, array.size[0], [&](int, Voxel voxel) {
      if constexpr (is_real)
        if (!std::isfinite(voxel)) return;
      low = voxel < low ? voxel : low;
      high = voxel > high ? voxel : high;
    });
  if (low <= high) range = {static_cast<double>(low), static_cast<double>(high)};
}

// Samples are voxel + shift, or shift - voxel.
template <class Voxel>
void shift_row(const Array& array, const Storage& storage, const std::byte* row, int16_t* samples) {
  const int shift = storage.first - static_cast<int>(storage.base);
  if (storage.negated)
    along_row<Voxel>(row, array.column_bytes, array.size[0], [&](int x, Voxel voxel) {
      samples[x] = static_cast<int16_t>(std::max(shift - voxel, kLowestSample));
    });
  else
    along_row<Voxel>(row, array.column_bytes, array.size[0], [&](int x, Voxel voxel) {
      samples[x] = static_cast<int16_t>(std::max(shift + voxel, kLowestSample));
    });
}

template <class Voxel>
void scale_row(const Array& array, const Storage& storage, const std::byte* row, int16_t* samples) {
  along_row<Voxel>(row, array.column_bytes, array.size[0], [&](int x, Voxel voxel) {
    const double v = static_cast<double>(voxel);
    const bool finite = !std::is_floating_point_v<Voxel> || std::isfinite(v);
    samples[x] = static_cast<int16_t>(finite ? storage.sample(v) : storage.lowest);
  });
}

template <class Voxel>
void multiply_row(const Array& array, int factor, const std::byte* row, int16_t* samples) {
  along_row<Voxel>(row, array.column_bytes, array.size[0],
                   [&](int x, Voxel voxel) { samples[x] = static_cast<int16_t>(voxel * factor); });
}

}  // namespace

Range find_range(const Array& array, Work& work, double share) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  std::vector<Range> ranges(array.slices.size(), {kInfinity, -kInfinity});
  work.spread(array.size[2], share, [&](int z) {
    with_type(array.type, [&](auto* voxel) {
      widen<std::remove_cvref_t<decltype(*voxel)>>(array, z, ranges[static_cast<size_t>(z)]);
    });
  });
  Range all = ranges[0];
  for (const Range& range : ranges)
    all = {std::min(all.lowest, range.lowest), std::max(all.highest, range.highest)};
  // A part of a volume, whose range is known, may lie beside all that was measured.
  if (array.range_given && all.lowest > all.highest) return {array.lowest, array.highest};
  require(all.lowest <= all.highest, "The array holds no finite value.");
  return all;
}

void sample_row(const Array& array, const Storage& storage, int y, int z, int16_t* samples) {
  const std::byte* row = array.row(y, z);
  with_type(array.type, [&](auto* pointer) {
    using Voxel = std::remove_cvref_t<decltype(*pointer)>;
    if constexpr (sizeof(Voxel) == 1) {
      if (storage.step == 1.0 / 128 && storage.base == 0 && !storage.negated)
        return multiply_row<Voxel>(array, 128, row, samples);
    }
    if constexpr (std::is_integral_v<Voxel> && sizeof(Voxel) <= 2) {
      if (storage.step == 1) return shift_row<Voxel>(array, storage, row, samples);
    }
    scale_row<Voxel>(array, storage, row, samples);
  });
}

}  // namespace render
