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
  void clear();

  // Adds samples first .. first + count - 1 of a line that counts slices. owner: the caller's number.
  void add(const Line& line, double first, int count, int owner);
  double first(size_t i) const { return firsts_[i]; }
  int count(size_t i) const { return counts_[i]; }
  int owner(size_t i) const { return owners_[i]; }

  // Casts what was added; the results of the i-th are in lane i.
  const Reduced& run();

 private:
  using Triple = std::array<double, 3>;
  // Positions that the samples of some stretches lie between, in grid units of the whole.
  struct Extent {
    Triple low{1e300, 1e300, 1e300}, high{-1e300, -1e300, -1e300};
    void widen(const Triple& start, const Triple& step, int count);
    // Voxels of the array, as ints.
    std::array<int, 3> lowest(const Size3& first) const;
    std::array<int, 3> highest(const Size3& first) const;
  };
  void cast(size_t from, size_t count, const Extent& extent);
  void cast_one_by_one();
  void set_bricks(const Extent& extent);
  void set_stack(const Extent& extent);
  void set_rays(size_t from, size_t count, bool parallel);

  const Casting& casting_;
  size_t size_ = 0;
  Extent extent_;
  std::array<Triple, kBatchRays> starts_{}, steps_{};  // grid units of the whole
  std::array<double, kBatchRays> firsts_{};
  std::array<int, kBatchRays> owners_{};

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
