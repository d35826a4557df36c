// Batches of ray stretches, cast through the library of sampling operations.
#pragma once

#include <climits>
#include <vector>

#include "cast/operations.h"
#include "cast/reduce.h"
#include "view/rays.h"

namespace render {

// What all batches of a picture share.
struct Casting {
  const Volume& volume;
  Sampler sampler;
  bool same_step;  // of all rays
  Wanted wanted;
  int most_samples;  // of a stretch
};

// One object per thread.
class Batch {
 public:
  explicit Batch(const Casting& casting);

  size_t size() const { return size_; }
  bool full() const { return size_ == kBatchRays; }
  void clear() {
    size_ = 0;
    latest_.fill(-1);
  }

  // Adds samples first .. first + count - 1 of a lane of lines that count slices, which stay until the batch
  // has run. What goes on with the lane's latest stretch makes it longer.
  void add(const LineLanes& lines, size_t lane, int first, int count) {
    if (latest_[lane] >= 0 && lengthen(static_cast<size_t>(latest_[lane]), lines, first, count)) return;
    latest_[lane] = static_cast<int8_t>(size_);
    stretches_[size_] = {&lines, static_cast<int>(lane), first};
    counts_[size_] = count;
    ++size_;
  }
  int first(size_t i) const { return stretches_[i].first; }
  int count(size_t i) const { return counts_[i]; }
  size_t lane(size_t i) const { return static_cast<size_t>(stretches_[i].lane); }

  // Casts what was added; the results of the i-th are in lane i.
  const Reduced& run();

 private:
  using Triple = std::array<double, 3>;
  // Grid units of the whole that the samples of some stretches lie between.
  struct Extent {
    Triple low{1e300, 1e300, 1e300}, high{-1e300, -1e300, -1e300};
    void widen(size_t axis, double start, double end);
    // Voxels of the array, along an axis that has been widened.
    int lowest(size_t axis, const Size3& first) const;
    int highest(size_t axis, const Size3& first) const;
  };
  struct PlacedStretch {
    const LineLanes* lines;
    int lane, first;
  };
  bool lengthen(size_t i, const LineLanes& lines, int first, int count) {
    PlacedStretch& s = stretches_[i];
    const bool before = first + count == s.first, after = s.first + counts_[i] == first;
    if (s.lines != &lines || !(before || after) || counts_[i] + count > casting_.most_samples) return false;
    if (before) s.first = first;
    counts_[i] += count;
    return true;
  }
  // The starts and steps of some stretches, in grid units, to where the operations read them.
  Extent place(size_t from, size_t count);
  void cast(size_t from, size_t count, const Extent& extent);
  void cast_one_by_one();
  void set_bricks(const Extent& extent);
  void set_stack(const Extent& extent);
  void set_rays(size_t count, bool parallel);

  const Casting& casting_;
  size_t size_ = 0;
  std::array<PlacedStretch, kBatchRays> stretches_{};
  Lanes<int8_t> latest_;  // of each lane, or -1
  size_t first_axis_;     // of those along which it counts how far the samples reach

  // What the operations are given.
  std::array<int, 3> base_{};  // the voxel of the array that their coordinates count from
  zox_Volume record_{};
  double boundaries_[2] = {0, 0};
  std::vector<const void*> shifted_slices_;
  std::vector<int16_t> samples_;
  std::vector<void*> planes_, shifted_planes_;
  std::array<Triple, kBatchRays> given_starts_{}, given_steps_{};
  std::array<const double*, kBatchRays> start_pointers_, step_pointers_;
  std::array<int32_t, kBatchRays> counts_{};
  Reduced reduced_{};
};

}  // namespace render
