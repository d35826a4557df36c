// The one source of chance in the tests: a seed makes the same batch everywhere.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
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

// Voxel contents, drawn so that rounding shows: near zero, near the ends of the type, or anything.
enum class Contents { kAny, kZeroOrOne, kExtreme };

inline Contents draw_contents(Random& random) {
  return random.pick({Contents::kAny, Contents::kAny, Contents::kZeroOrOne, Contents::kExtreme});
}

// Fills `bytes` bytes with voxels of `element_size` bytes.
inline void fill_voxels(uint8_t* at, size_t bytes, int element_size, Contents contents, Random& random) {
  const bool wide = element_size == 2;
  for (size_t done = 0; done < bytes; done += 8) {
    uint64_t word = random.bits();
    if (contents == Contents::kZeroOrOne) {
      word &= wide ? 0x0001000100010001u : 0x0101010101010101u;
    } else if (contents == Contents::kExtreme) {
      // 255 or 254; 32767 or -32768.
      const uint64_t low = word & (wide ? 0x0001000100010001u : 0x0101010101010101u);
      word = wide ? 0x7FFF7FFF7FFF7FFFu + low : 0xFEFEFEFEFEFEFEFEu | low;
    }
    std::memcpy(at + done, &word, std::min<size_t>(8, bytes - done));
  }
}

}  // namespace zox_test
