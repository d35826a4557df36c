#include "volume/statistics.h"

#include <algorithm>
#include <numeric>

namespace render {
namespace {

constexpr size_t kSamples = 65536;

// Neighbours are often equal, and counting the same number twice in a row waits for memory: odd columns are
// counted apart.
void count_slice(int columns, const Statistics::Box& box, int z, const Statistics::RowReader& read_row,
                 std::vector<uint32_t>& counts) {
  std::vector<int16_t> row(static_cast<size_t>(columns));
  uint32_t* const even = counts.data() - INT16_MIN;
  uint32_t* const odd = even + kSamples;
  const int first = box.first[0], last = first + box.size[0];
  for (int y = box.first[1]; y < box.first[1] + box.size[1]; ++y) {
    read_row(y, z, row.data());
    int x = first;
    for (; x + 1 < last; x += 2) {
      ++even[row[static_cast<size_t>(x)]];
      ++odd[row[static_cast<size_t>(x) + 1]];
    }
    if (x < last) ++even[row[static_cast<size_t>(x)]];
  }
}

}  // namespace

Statistics::Statistics(const uint64_t* counts)
    : counts_(counts, counts + kSamples), total_(std::accumulate(counts, counts + kSamples, uint64_t{0})) {}

void Statistics::count(int columns, const Box& box, const RowReader& read_row, Work& work) {
  const std::lock_guard only_one(counting_);
  if (!counts_.empty()) return;
  std::vector<uint64_t> all(kSamples);
  std::mutex mutex;
  constexpr int kSlices = 64;  // of at most 2048 * 2048 voxels: the sums fit 32 bits
  work.spread((box.size[2] + kSlices - 1) / kSlices, 0, [&](int part) {
    std::vector<uint32_t> counts(2 * kSamples);
    for (int z = part * kSlices; z < std::min(part * kSlices + kSlices, box.size[2]); ++z)
      count_slice(columns, box, box.first[2] + z, read_row, counts);
    const std::lock_guard lock(mutex);
    for (size_t i = 0; i < kSamples; ++i) all[i] += uint64_t{counts[i]} + counts[i + kSamples];
  });
  total_ = std::accumulate(all.begin(), all.end(), uint64_t{0});
  counts_ = std::move(all);
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
