// Fixed input for every operation: made by arithmetic of its own, so that it stays what it is whatever
// becomes of the random tests.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "operation_list.h"

namespace golden {

constexpr int kScenes = 4;

// Numbers that are the same everywhere: a multiplicative congruence, its upper bits.
class Stream {
 public:
  explicit Stream(uint32_t seed) : state_(seed * 2654435761u + 1) {}
  uint32_t next() { return (state_ = state_ * 1664525u + 1013904223u) >> 8; }  // 24 bits
  double between(double low, double high) { return low + (high - low) * (next() * 0x1p-24); }

 private:
  uint32_t state_;
};

// One volume with 64 rays of different lengths, all inside. Scenes of slice stacks differ in what they
// make an operation do: several regions; one, with rays that start together; one, with rays that do not,
// and rows from the last to the first; more samples than the stack of a call holds.
class Scene {
 public:
  Scene(const zox_test::Caster& caster, int number);
  Scene(const Scene&) = delete;
  Scene& operator=(const Scene&) = delete;

  // Casts into fresh planes, and gives a checksum of the planes' bytes, in order.
  uint64_t checksum(zox::RayCast cast);

  const zox_Rays& rays() const { return rays_; }
  void fill_planes(Stream& stream);

 private:
  static constexpr int kRays = 64;

  void make_blocked(Stream& stream);
  void make_stack(const zox_test::Caster& caster, int number, Stream& stream);
  void make_rays(int number, Stream& stream);

  int element_size_;
  std::vector<uint8_t> voxels_;
  std::vector<const void*> slices_;
  std::vector<int32_t> rowoffs_, regslice_;
  std::vector<double> regbounds_, regscale_;
  zox_Volume volume_{};
  std::array<std::array<double, 3>, kRays> starts_, steps_;
  std::array<const double*, kRays> start_pointers_, step_pointers_;
  std::array<int32_t, kRays> counts_;
  std::vector<std::vector<uint8_t>> planes_;
  std::vector<void*> plane_pointers_;
  zox_Rays rays_{};
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

}  // namespace golden
