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

// One stretch of a ray: samples first .. first + count - 1 of a line that counts slices.
struct Item {
  Line line;
  double first;
  int count;
  int owner;  // the caller's
};

// One object per thread.
class Batch {
 public:
  explicit Batch(const Casting& casting);

  bool empty() const { return items_.empty(); }
  bool full() const { return items_.size() == kBatchRays; }
  void add(const Item& item) { items_.push_back(item); }
  void clear() { items_.clear(); }
  const std::vector<Item>& items() const { return items_; }

  // Casts the items; the results are for item i in lane i.
  const Reduced& run();

 private:
  // Voxels of the array that the samples of some items lie in, or past.
  struct Extent {
    std::array<int, 3> low{INT_MAX, INT_MAX, INT_MAX}, high{};
  };
  Extent extent(size_t from, size_t count) const;
  void cast(size_t from, size_t count, const Extent& extent);
  void set_bricks(const Extent& extent);
  void set_stack(const Extent& extent);
  void set_rays(size_t from, size_t count, bool parallel);

  const Casting& casting_;
  std::vector<Item> items_;
  std::vector<int16_t> samples_;
  std::vector<void*> planes_;
  std::array<std::array<double, 3>, kBatchRays> starts_{}, steps_{};
  std::array<const double*, kBatchRays> start_pointers_, step_pointers_;
  std::array<int32_t, kBatchRays> counts_{};
  // The volume as the operations see it: from voxel base_ on.
  std::array<int, 3> base_{};
  zox_Volume record_{};
  double boundaries_[2] = {0, 0};
  std::vector<const void*> shifted_slices_;
  Reduced reduced_{};
};

}  // namespace render
