#include "phantom.h"

#include <immintrin.h>
#include <zox_volume_layout.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <random>

namespace bench {
namespace {

// Slices lie this many bytes further apart than their rows need, as separately allocated images do.
constexpr std::size_t kSlicePadding = 192;

// Blobs about a sixth of the edge wide, and white noise: neither constant runs nor pure noise.
class Field {
 public:
  explicit Field(int edge) : waves_(edge) {
    for (int i = 0; i < edge; ++i) waves_[i] = static_cast<float>(std::sin(6.0 * 6.28318530718 * i / edge));
  }

  // Between -1 and 1 but for a little noise beyond.
  float at(int x, int y, int z) const {
    const float shape = (waves_[x] * waves_[y] + waves_[y] * waves_[z] + waves_[z] * waves_[x]) * 0.4f;
    return shape + 0.12f * noise(x, y, z);
  }

 private:
  static float noise(int x, int y, int z) {
    uint32_t h = static_cast<uint32_t>(x) * 0x9E3779B1u ^ static_cast<uint32_t>(y) * 0x85EBCA77u ^
                 static_cast<uint32_t>(z) * 0xC2B2AE3Du;
    h = (h ^ (h >> 15)) * 0x2C1B3C6Du;
    h ^= h >> 12;
    return static_cast<float>(static_cast<int32_t>(h)) * 0x1p-31f;
  }

  std::vector<float> waves_;
};

void put_8u(std::byte* at, float value) {
  *at = static_cast<std::byte>(static_cast<int>(std::clamp(128.0f + 120.0f * value, 0.0f, 255.0f)));
}

void put_16s(std::byte* at, float value) {
  const auto voxel = static_cast<int16_t>(900.0f + 1800.0f * value);
  std::memcpy(at, &voxel, sizeof voxel);
}

void fill_bricks(Volume& volume, Element element) {
  const auto [edge, slices] = volume.shape;
  const int width = bytes_per_sample(element);
  volume.voxels.resize(zox_blocked_elements(edge, slices) * width);
  const Field field(std::max(edge, slices));
  for (int z = 0; z < slices; ++z)
    for (int y = 0; y < edge; ++y)
      for (int x = 0; x < edge; ++x) {
        std::byte* at = volume.voxels.data() + std::size_t{zox_blocked_index(edge, x, y, z)} * width;
        (element == Element::k8U ? put_8u : put_16s)(at, field.at(x, y, z));
      }
  volume.record.data = volume.voxels.data();
  volume.record.size = edge;
  volume.depth = slices - 1;
}

void fill_row(std::byte* row, const Field& field, Element element, int edge, int y, int z) {
  for (int x = 0; x < edge; ++x) {
    const float value = field.at(x, y, z);
    if (element == Element::k8U) put_8u(row + x, value);
    if (element == Element::k16S) put_16s(row + x * std::ptrdiff_t{2}, value);
    if (element == Element::kBit && value > 0) row[x >> 3] |= std::byte{0x80} >> (x & 7);
  }
}

void set_regions(Volume& volume, bool one) {
  const int slices = volume.shape.slices;
  if (one) {
    volume.region_slices = {0};
    volume.region_scales = {1.0};
  } else {
    volume.region_slices = {0, slices / 4, slices / 4 * 3};
    volume.region_scales = {1.0, 1.25, 0.8};
  }
  volume.region_bounds = {0.0};
  const std::size_t regions = volume.region_slices.size();
  for (std::size_t j = 0; j < regions; ++j) {
    const int end = j + 1 < regions ? volume.region_slices[j + 1] : slices;
    volume.region_bounds.push_back(volume.region_bounds[j] +
                                   (end - volume.region_slices[j]) / volume.region_scales[j]);
  }
  volume.depth = volume.region_bounds.back() - 1.0 / volume.region_scales.back();
}

void fill_stack(Volume& volume, const std::string& storage, Element element) {
  const auto [edge, slices] = volume.shape;
  const std::size_t pitch = element == Element::kBit ? edge / 8 : edge * bytes_per_sample(element);
  const std::size_t slice_bytes = pitch * edge + (storage == "packed" ? 0 : kSlicePadding);
  volume.voxels.assign(slice_bytes * slices, std::byte{0});
  std::vector<int> slice_place(slices), row_place(edge);
  std::iota(slice_place.begin(), slice_place.end(), 0);
  std::iota(row_place.begin(), row_place.end(), 0);
  if (storage == "scattered") {
    std::mt19937 random(7);
    std::shuffle(slice_place.begin(), slice_place.end(), random);
    std::shuffle(row_place.begin(), row_place.end(), random);
  }
  for (const int place : slice_place) volume.slices.push_back(volume.voxels.data() + place * slice_bytes);
  volume.slices.push_back(volume.slices.back());  // trilinear casters read one pointer more
  for (const int place : row_place) volume.row_offsets.push_back(static_cast<int32_t>(place * pitch));

  const Field field(std::max(edge, slices));
  for (int z = 0; z < slices; ++z)
    for (int y = 0; y < edge; ++y) {
      auto* slice = static_cast<std::byte*>(const_cast<void*>(volume.slices[z]));
      fill_row(slice + volume.row_offsets[y], field, element, edge, y, z);
    }

  set_regions(volume, storage == "1region" || storage == "packed");
  volume.record.slices = volume.slices.data();
  volume.record.rowoffs = volume.row_offsets.data();
  volume.record.nslices = slices;
  volume.record.nregions = static_cast<int32_t>(volume.region_slices.size());
  volume.record.regslice = volume.region_slices.data();
  volume.record.regbounds = volume.region_bounds.data();
  volume.record.regscale = volume.region_scales.data();
}

}  // namespace

void fill_volume(Volume& volume, const std::string& storage, Element element, Shape shape) {
  volume = {};
  volume.shape = shape;
  if (storage == "bricks")
    fill_bricks(volume, element);
  else
    fill_stack(volume, storage, element);
}

void evict(const Volume& volume) {
  constexpr std::size_t kLine = 64;
  for (std::size_t i = 0; i < volume.voxels.size(); i += kLine) _mm_clflush(volume.voxels.data() + i);
  _mm_mfence();
}

}  // namespace bench
