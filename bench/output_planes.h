// Output planes in one block.
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <span>
#include <vector>

namespace bench {

struct Planes {
  Planes() = default;

  // Planes that many bytes apart; the first starts on a cache line.
  Planes(std::size_t count, std::size_t spacing)
      : size_(count * spacing), block_(new (kLine) std::byte[size_]()) {
    for (std::size_t k = 0; k < count; ++k) pointers.push_back(block_.get() + k * spacing);
  }

  std::span<std::byte> bytes() { return {block_.get(), size_}; }

  std::vector<void*> pointers;

 private:
  static constexpr std::align_val_t kLine{64};
  struct Release {
    void operator()(std::byte* block) const { ::operator delete[](block, kLine); }
  };

  std::size_t size_ = 0;
  std::unique_ptr<std::byte[], Release> block_;
};

}  // namespace bench
