#include "volume/statistics.h"

#include <algorithm>

namespace render {
namespace {

constexpr size_t kSamples = 65536;

void count_slice(const Size3& size, int z, const Statistics::RowReader& read_row,
                 std::vector<uint32_t>& counts) {
  std::vector<int16_t> row(static_cast<size_t>(size[0]));
  for (int y = 0; y < size[1]; ++y) {
    read_row(y, z, row.data());
    for (const int16_t sample : row) ++counts[static_cast<size_t>(sample - INT16_MIN)];
  }
}

}  // namespace

void Statistics::count(const Size3& size, const RowReader& read_row, Work& work) {
  // A failure leaves it to the next call.
  std::call_once(once_, [&] {
    std::vector<uint64_t> all(kSamples);
    std::mutex mutex;
    constexpr int kSlices = 64;  // of at most 2048 * 2048 voxels: the sums fit 32 bits
    work.spread((size[2] + kSlices - 1) / kSlices, 0, [&](int part) {
      std::vector<uint32_t> counts(kSamples);
      for (int z = part * kSlices; z < std::min(part * kSlices + kSlices, size[2]); ++z)
        count_slice(size, z, read_row, counts);
      const std::lock_guard lock(mutex);
      for (size_t i = 0; i < kSamples; ++i) all[i] += counts[i];
    });
    total_ = static_cast<uint64_t>(size[0]) * static_cast<uint64_t>(size[1]) * static_cast<uint64_t>(size[2]);
    counts_ = std::move(all);
  });
}

int Statistics::percentile(double share) const {
  const double wanted = share * static_cast<double>(total_);
  uint64_t passed = 0;
  int last = INT16_MIN;
  for (int sample = INT16_MIN; sample <= INT16_MAX; ++sample) {
    if (of(sample) == 0) continue;
    passed += of(sample);
    last = sample;
    if (static_cast<double>(passed) >= wanted) break;
  }
  return last;
}

}  // namespace render
