// The one source of chance in the tests: a seed makes the same batch everywhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>

namespace zox_test {

class Random {
 public:
  explicit Random(uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15u + 0x1234567u) {}

  // Decided by a fuzzer's bytes, two for every draw, which must outlive this; then as seed 0.
  Random(const uint8_t* bytes, size_t size) : state_(0x1234567u), bytes_(bytes), bytes_left_(size) {}

  // splitmix64: every seed, also 0 and its neighbours, starts an unrelated stream.
  uint64_t bits() {
    if (bytes_left_ < 2) return mix(state_ += 0x9E3779B97F4A7C15u);
    const uint64_t drawn = bytes_[0] | static_cast<uint64_t>(bytes_[1]) << 8;
    bytes_ += 2;
    bytes_left_ -= 2;
    return mix(drawn * 0x9E3779B97F4A7C15u);
  }

  // A whole number from low to high, both included.
  int whole(int low, int high) {
    if (high <= low) return low;
    const uint64_t count = static_cast<uint64_t>(static_cast<int64_t>(high) - low + 1);
    return static_cast<int>(low + static_cast<int64_t>(bits() % count));
  }

  // Any double from low up to, but not including, high.
  double real(double low, double high) {
    return low + (high - low) * (static_cast<double>(bits() >> 11) * 0x1p-53);
  }

  bool chance(double probability) { return real(0, 1) < probability; }

  template <typename T>
  T pick(std::initializer_list<T> choices) {
    return choices.begin()[whole(0, static_cast<int>(choices.size()) - 1)];
  }

 private:
  static uint64_t mix(uint64_t z) {
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
  }

  uint64_t state_;
  const uint8_t* bytes_ = nullptr;
  size_t bytes_left_ = 0;
};

}  // namespace zox_test
