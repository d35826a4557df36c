// How often each sample occurs in a volume, counted when first asked for.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

#include "cast/work.h"
#include "volume/array.h"

namespace render {

class Statistics {
 public:
  using RowReader = std::function<void(int y, int z, int16_t* samples)>;
  Statistics() = default;
  // As counted elsewhere: 65536 numbers, from sample -32768 on.
  explicit Statistics(const uint64_t* counts);

  // The voxels of a box within an array's rows.
  struct Box {
    Size3 first, size;
  };
  void count(int columns, const Box& box, const RowReader& read_row, Work& work);

  const std::vector<uint64_t>& counts() const { return counts_; }
  uint64_t of(int sample) const { return counts_[static_cast<size_t>(sample - INT16_MIN)]; }
  // The smallest sample that at least this share of the voxels does not exceed.
  int percentile(double share) const;

 private:
  std::mutex counting_;
  std::vector<uint64_t> counts_;
  uint64_t total_ = 0;
};

struct Window {
  double center, width;  // values
};

}  // namespace render
