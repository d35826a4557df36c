// A batch of rays and its planes in a few lines, with samples read back as plain numbers.
#pragma once

#include <cstdint>
#include <vector>

#include "zox_volume.h"

namespace zox_unit {

// One step of fixed point with 20, and with 21, fraction bits.
constexpr double kUnit20 = 1.0 / 1048576, kUnit21 = 1.0 / 2097152;

struct Point {
  double x, y, z;
};

class Batch {
 public:
  // Bytes per sample: 1 or 2.
  explicit Batch(int element_size) : element_size_(element_size) {}

  Batch& add(Point start, Point step, int32_t nsamples);

  // Gives the operation another number of rays than were added.
  Batch& pretend(int32_t nrays) {
    nrays_ = nrays;
    return *this;
  }

  // Prefills fresh planes and casts; checks that nothing but samples of the rays was written.
  int run(int (*cast)(const zox_Volume*, const zox_Rays*), const zox_Volume& volume);

  int at(int k, int r) const;
  std::vector<int> samples(int r) const;  // all that ray r asked for
  int untouched() const;                  // what a sample reads as that was never written
  bool written(int k, int r) const { return at(k, r) != untouched(); }

 private:
  static constexpr uint8_t kPrefill = 0xA5;
  static constexpr int kSpare = 3;  // elements after the last ray of a plane, planes after the last

  void check_nothing_else_written() const;

  int element_size_;
  int32_t nrays_ = -1;
  std::vector<Point> starts_, steps_;
  std::vector<int32_t> nsamples_;
  std::vector<std::vector<uint8_t>> planes_;
};

}  // namespace zox_unit
