// A buffer that begins or ends at a page that nobody may touch, so that one byte too far is seen.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "random.h"

namespace zox_test {

class GuardedBuffer {
 public:
  enum class Flush { kStart, kEnd };

  // Bytes on the open side of a buffer that a test may compare to see stray writes.
  static constexpr size_t kMargin = 64;

  GuardedBuffer() = default;
  GuardedBuffer(size_t bytes, Flush flush);
  GuardedBuffer(size_t bytes, Random& random)
      : GuardedBuffer(bytes, random.chance(0.5) ? Flush::kStart : Flush::kEnd) {}

  uint8_t* data() const { return data_; }
  template <typename T>
  T* as() const {
    return reinterpret_cast<T*>(data_);
  }
  size_t size() const { return size_; }

  // The kMargin bytes on the open side, or fewer where the page is nearly full.
  uint8_t* margin() const;
  size_t margin_size() const;

  // From now on an input: nobody writes to it, and sanitizers and valgrind know its exact bytes.
  void seal();

  // The pages between the guards, for tests that take them away one by one.
  uint8_t* pages() const { return pages_.get(); }
  size_t pages_size() const { return pages_.get_deleter().size; }

 private:
  struct GiveBack {
    size_t size;
    bool sealed;
    uint8_t* slack;  // that nobody may touch till then
    size_t slack_size;
    void operator()(uint8_t* pages) const;
  };

  void forbid_slack(size_t keep);

  std::unique_ptr<uint8_t, GiveBack> pages_;
  uint8_t* data_ = nullptr;
  size_t size_ = 0;
};

// Arrays of gigabytes that take megabytes: the same pages, seen over and over.
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
