// The planes of a batch: each flush against a guard page. As output they are prefilled, and compared whole.
#pragma once

#include <string>
#include <vector>

#include "guarded_buffer.h"

namespace zox_test {

class Planes {
 public:
  Planes() = default;
  Planes(int count, int rays, int element_size, Random& random);

  void* const* pointers() const { return table_.as<void*>(); }
  int count() const { return static_cast<int>(planes_.size()); }
  std::vector<GuardedBuffer>& buffers() { return planes_; }

  // Fills planes and their margins, so that what a call leaves alone stays known.
  void fill(uint8_t pattern);

  // Everything a call may have changed: planes and margins, in order.
  std::vector<uint8_t> contents() const;

  // Where two contents() differ first, in words.
  std::string first_difference(const std::vector<uint8_t>& expected,
                               const std::vector<uint8_t>& actual) const;

 private:
  std::vector<GuardedBuffer> planes_;
  GuardedBuffer table_;
  int element_size_ = 1;
};

}  // namespace zox_test
