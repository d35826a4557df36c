// Arrays of gigabytes that take megabytes: the same pages, seen over and over.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zox_test {

class RepeatedPages {
 public:
  static constexpr size_t kPeriod = size_t{1} << 21;  // bytes after which everything repeats

  // At least `bytes` that can be read and written.
  explicit RepeatedPages(size_t bytes);
  RepeatedPages(const RepeatedPages&) = delete;
  RepeatedPages& operator=(const RepeatedPages&) = delete;
  ~RepeatedPages();

  template <typename T>
  T* as() const {
    return reinterpret_cast<T*>(at_);
  }
  template <typename T>
  static constexpr size_t period() {
    return kPeriod / sizeof(T);
  }

 private:
  uint8_t* at_;
  size_t bytes_;
};

}  // namespace zox_test
