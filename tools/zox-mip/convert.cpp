#include "convert.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>

#include "failure.h"

namespace zox_mip {
namespace {

// Half of the 16-bit range only: a display window is at most 32767 wide, so that the whole of the data
// can still be shown in one window.
constexpr double kFloatSpan = 32767;

std::unique_ptr<std::byte[]> allocate_shorts(size_t count) {
  return std::make_unique_for_overwrite<std::byte[]>(count * sizeof(int16_t));
}

template <class T>
void store_integers(const T* raw, const std::string& name, Volume& volume) {
  T low = raw[0];
  T high = raw[0];
  for (size_t i = 1; i < volume.count(); ++i) {
    low = raw[i] < low ? raw[i] : low;
    high = raw[i] > high ? raw[i] : high;
  }
  if (!std::in_range<int16_t>(low) || !std::in_range<int16_t>(high))
    fail("'" + name + "' holds values from " + std::to_string(low) + " to " + std::to_string(high) +
         ", which do not fit into 16 bits with sign.");
  volume.voxels = allocate_shorts(volume.count());
  int16_t* stored = reinterpret_cast<int16_t*>(volume.voxels.get());
  for (size_t i = 0; i < volume.count(); ++i) stored[i] = static_cast<int16_t>(raw[i]);
}

template <class T>
void store_floats(const T* raw, const std::string& name, Volume& volume) {
  double low = std::numeric_limits<double>::infinity();
  double high = -low;
  for (size_t i = 0; i < volume.count(); ++i) {
    if (!std::isfinite(raw[i])) continue;
    low = raw[i] < low ? raw[i] : low;
    high = raw[i] > high ? raw[i] : high;
  }
  if (low > high) fail("'" + name + "' holds no finite value.");
  if (!std::isfinite(high - low)) fail("'" + name + "' holds values too far apart to be scaled to 16 bits.");
  volume.offset = low;
  volume.scale = high > low ? (high - low) / kFloatSpan : 1;
  volume.voxels = allocate_shorts(volume.count());
  int16_t* stored = reinterpret_cast<int16_t*>(volume.voxels.get());
  for (size_t i = 0; i < volume.count(); ++i) {
    const double value = std::isfinite(raw[i]) ? raw[i] : low;
    // The quotient can pass the span by an error of rounding, and by more where the scale is denormal.
    stored[i] = static_cast<int16_t>(std::min((value - low) / volume.scale + 0.5, kFloatSpan));
  }
}

// Calls `use` with a null pointer of the C++ type that a file type means.
template <class Use>
void with_type(FileType type, Use use) {
  switch (type) {
    case FileType::kU8:
      return use(static_cast<const uint8_t*>(nullptr));
    case FileType::kS8:
      return use(static_cast<const int8_t*>(nullptr));
    case FileType::kU16:
      return use(static_cast<const uint16_t*>(nullptr));
    case FileType::kS16:
      return use(static_cast<const int16_t*>(nullptr));
    case FileType::kU32:
      return use(static_cast<const uint32_t*>(nullptr));
    case FileType::kS32:
      return use(static_cast<const int32_t*>(nullptr));
    case FileType::kU64:
      return use(static_cast<const uint64_t*>(nullptr));
    case FileType::kS64:
      return use(static_cast<const int64_t*>(nullptr));
    case FileType::kF32:
      return use(static_cast<const float*>(nullptr));
    case FileType::kF64:
      return use(static_cast<const double*>(nullptr));
  }
}

}  // namespace

size_t file_type_bytes(FileType type) {
  size_t bytes = 0;
  with_type(type, [&](auto* typed) { bytes = sizeof(*typed); });
  return bytes;
}

void store_voxels(std::unique_ptr<std::byte[]> raw, FileType type, const std::string& name, Volume& volume) {
  const bool kept = type == FileType::kU8 || type == FileType::kS16;
  volume.type = type == FileType::kU8 ? VoxelType::kBytes : VoxelType::kShorts;
  if (kept) {
    volume.voxels = std::move(raw);
    return;
  }
  with_type(type, [&](auto* typed) {
    typed = reinterpret_cast<decltype(typed)>(raw.get());
    if constexpr (std::is_floating_point_v<std::remove_cvref_t<decltype(*typed)>>)
      store_floats(typed, name, volume);
    else
      store_integers(typed, name, volume);
  });
}

}  // namespace zox_mip
