// The one source of chance in the tests: a seed makes the same batch everywhere.
#pragma once

#include <cstdint>
#include <initializer_list>

namespace zox_test {

class Random {
 public:
  explicit Random(uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15u + 0x1234567u) {}

  // splitmix64: every seed, also 0 and its neighbours, starts an unrelated stream.
  uint64_t bits() {
    uint64_t z = (state_ += 0x9E3779B97F4A7C15u);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
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
  uint64_t state_;
};

}  // namespace zox_test
