// A batch of rays and its planes in a few lines, with samples read back as plain numbers.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "rays.h"

namespace zox_test {

// One step of fixed point with 20, and with 21, fraction bits.
constexpr double kUnit20 = 1.0 / 1048576, kUnit21 = 1.0 / 2097152;

class Batch {
 public:
  // Bytes per sample: 1 or 2.
  explicit Batch(int element_size) : element_size_(element_size) {}

  Batch& add(const Point& start, const Point& step, int32_t nsamples);

  // Gives the operation another number of rays than were added.
  Batch& pretend(int32_t nrays) {
    rays_.nrays = nrays;
    return *this;
  }

  // Prefills fresh planes and casts. Throws when anything but samples of the rays was written.
  int run(const std::function<int(const zox_Volume*, const zox_Rays*)>& cast, const zox_Volume& volume);

  // The rays, with planes freshly filled. The record points into the batch.
  zox_Rays rays();
  int longest() const { return rays_.longest(); }                           // samples of the longest ray
  uint8_t* plane(int k) { return planes_[static_cast<size_t>(k)].data(); }  // of sample k

  int at(int k, int r) const;
  std::vector<int> samples(int r) const;  // all that ray r asked for
  int untouched() const;                  // what a sample reads as that was never written
  bool written(int k, int r) const { return at(k, r) != untouched(); }
  bool anything_written() const;

 private:
  static constexpr uint8_t kPrefill = 0xA5;
  static constexpr int kSpare = 3;          // elements after the last ray of a plane, planes after the last
  static constexpr int kMostPlanes = 2000;  // who asks for more is refused before anything is written

  void check_nothing_else_written() const;

  int element_size_;
  RayList rays_;
  std::vector<std::vector<uint8_t>> planes_;
  std::vector<void*> plane_pointers_;
};

}  // namespace zox_test
