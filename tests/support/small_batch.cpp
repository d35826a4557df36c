#include "small_batch.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string>

namespace zox_test {

Batch& Batch::add(const Point& start, const Point& step, int32_t nsamples) {
  rays_.starts.push_back(start);
  rays_.steps.push_back(step);
  rays_.counts.push_back(nsamples);
  rays_.nrays = static_cast<int32_t>(rays_.starts.size());
  return *this;
}

zox_Rays Batch::rays() {
  const size_t count = static_cast<size_t>(kSpare + std::min(longest(), kMostPlanes));
  const size_t bytes = (rays_.starts.size() + kSpare) * static_cast<size_t>(element_size_);
  planes_.assign(count, std::vector<uint8_t>(bytes, kPrefill));
  plane_pointers_.clear();
  for (auto& plane : planes_) plane_pointers_.push_back(plane.data());
  return rays_.record(plane_pointers_.data());
}

int Batch::run(const std::function<int(const zox_Volume*, const zox_Rays*)>& cast, const zox_Volume& volume) {
  const zox_Rays record = rays();
  const int status = cast(&volume, &record);
  check_nothing_else_written();
  return status;
}

int Batch::at(int k, int r) const {
  const uint8_t* plane = planes_[static_cast<size_t>(k)].data();
  if (element_size_ == 1) return plane[r];
  int16_t sample;
  std::memcpy(&sample, plane + 2 * r, sizeof sample);
  return sample;
}

std::vector<int> Batch::samples(int r) const {
  std::vector<int> samples;
  for (int k = 0; k < rays_.counts[static_cast<size_t>(r)]; ++k) samples.push_back(at(k, r));
  return samples;
}

int Batch::untouched() const {
  return element_size_ == 1 ? kPrefill : static_cast<int16_t>(kPrefill << 8 | kPrefill);
}

bool Batch::anything_written() const {
  return std::any_of(planes_.begin(), planes_.end(), [](const std::vector<uint8_t>& plane) {
    return std::any_of(plane.begin(), plane.end(), [](uint8_t b) { return b != kPrefill; });
  });
}

void Batch::check_nothing_else_written() const {
  const int rays = static_cast<int>(rays_.starts.size());
  for (int k = 0; k < static_cast<int>(planes_.size()); ++k) {
    for (int r = 0; r < rays + kSpare; ++r) {
      const bool is_sample = r < rays_.nrays && k < rays_.counts[static_cast<size_t>(r)];
      if (!is_sample && written(k, r))
        throw std::runtime_error("stray write at sample " + std::to_string(k) + ", ray " + std::to_string(r));
    }
  }
}

}  // namespace zox_test
