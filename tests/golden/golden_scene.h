// Fixed input for every operation: made by arithmetic of its own, so that it stays what it is whatever
// becomes of the random tests.
#pragma once

#include <cstdint>

#include "operation_list.h"
#include "small_batch.h"
#include "small_volumes.h"

namespace golden {

constexpr int kScenes = 4;

// Numbers that are the same everywhere: a multiplicative congruence, its upper bits.
class Stream {
 public:
  explicit Stream(uint32_t seed) : state_(seed * 2654435761u + 1) {}
  uint32_t next() { return (state_ = state_ * 1664525u + 1013904223u) >> 8; }  // 24 bits
  void fill(uint8_t* at, size_t bytes) {
    for (size_t i = 0; i < bytes; ++i) at[i] = static_cast<uint8_t>(next());
  }
  double between(double low, double high) { return low + (high - low) * (next() * 0x1p-24); }

 private:
  uint32_t state_;
};

// FNV-1a, 64 bits.
class Checksum {
 public:
  void add(const void* bytes, size_t count) {
    for (size_t i = 0; i < count; ++i) {
      value_ = (value_ ^ static_cast<const uint8_t*>(bytes)[i]) * 0x100000001B3u;
    }
  }
  uint64_t value() const { return value_; }

 private:
  uint64_t value_ = 0xCBF29CE484222325u;
};

// One volume with 64 rays of different lengths, all inside. Scenes of slice stacks differ in what they
// make an operation do: several regions; one, with rays that start together; one, with rays that do not,
// and rows from the last to the first; more samples than the stack of a call holds.
class Scene {
 public:
  Scene(const zox_test::Caster& caster, int number);

  // Casts into fresh planes, and gives a checksum of the planes' bytes, in order.
  uint64_t checksum(zox::RayCast cast);

  // The rays, with planes of any numbers.
  zox_Rays filled_rays(Stream& stream);

 private:
  void make_stack(int number);
  void make_rays(int number, Stream& stream);

  bool is_blocked_;
  size_t plane_bytes_;
  zox_test::Blocked blocked_;
  zox_test::Stack stack_;
  zox_test::Batch batch_;
};

}  // namespace golden
