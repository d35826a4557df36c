#include "small_batch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace zox_unit {

Batch& Batch::add(Point start, Point step, int32_t nsamples) {
  starts_.push_back(start);
  steps_.push_back(step);
  nsamples_.push_back(nsamples);
  nrays_ = static_cast<int32_t>(starts_.size());
  return *this;
}

int Batch::run(int (*cast)(const zox_Volume*, const zox_Rays*), const zox_Volume& volume) {
  const int count = kSpare + std::max(0, *std::max_element(nsamples_.begin(), nsamples_.end()));
  const size_t bytes = (starts_.size() + kSpare) * static_cast<size_t>(element_size_);
  planes_.assign(static_cast<size_t>(count), std::vector<uint8_t>(bytes, kPrefill));
  std::vector<void*> planes;
  for (auto& plane : planes_) planes.push_back(plane.data());
  std::vector<const double*> starts, steps;
  for (const Point& start : starts_) starts.push_back(&start.x);
  for (const Point& step : steps_) steps.push_back(&step.x);
  const zox_Rays rays = {planes.data(), nrays_, starts.data(), steps.data(), nsamples_.data()};
  const int status = cast(&volume, &rays);
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
  for (int k = 0; k < nsamples_[static_cast<size_t>(r)]; ++k) samples.push_back(at(k, r));
  return samples;
}

int Batch::untouched() const {
  return element_size_ == 1 ? kPrefill : static_cast<int16_t>(kPrefill << 8 | kPrefill);
}

void Batch::check_nothing_else_written() const {
  const int rays = static_cast<int>(starts_.size());
  for (int k = 0; k < static_cast<int>(planes_.size()); ++k) {
    for (int r = 0; r < rays + kSpare; ++r) {
      const bool is_sample = r < nrays_ && k < nsamples_[static_cast<size_t>(r)];
      if (is_sample) continue;
      EXPECT_FALSE(written(k, r)) << "stray write at sample " << k << ", ray " << r;
    }
  }
}

}  // namespace zox_unit
