// A slice stack around given samples: every row, slice and table just as large as they demand.
#pragma once

#include <vector>

#include "guarded_buffer.h"
#include "operation_list.h"
#include "rays.h"

namespace zox_test {

class SliceStack {
 public:
  SliceStack() = default;

  // `samples` are the voxels that are read, or would be if their slice were there: their rows and
  // columns exist. `slices` is the length of the table of slice pointers.
  // `one_region` says that the samples are read on the one-region path. `apart` gives every slice
  // pages of its own; otherwise that is left to chance. `strict`: no offsets beyond what the
  // documentation allows.
  SliceStack(const Caster& caster, const std::vector<Voxel>& samples, int slices, bool one_region, bool apart,
             bool strict, Random& random);

  const void* const* slices() const { return table_.as<const void*>(); }
  const int32_t* rowoffs() const { return rowoffs_.as<int32_t>() - first_row_; }

  // The pages of slice s when no other slice is on them and samples read it; null otherwise.
  struct Pages {
    uint8_t* at;
    size_t size;
  };
  Pages slice_pages(int s) const { return pages_[static_cast<size_t>(s)]; }

 private:
  struct Extent {
    int64_t low, high;
  };
  Extent draw_row_offsets(const Caster& caster, const std::vector<Voxel>& samples, bool wrapping_sums,
                          bool strict, Random& random);
  void place_slices(const std::vector<bool>& used, Extent bytes, int alignment, bool apart, Random& random);

  GuardedBuffer table_;
  GuardedBuffer rowoffs_;
  int first_row_ = 0;
  std::vector<GuardedBuffer> buffers_;
  std::vector<Pages> pages_;
};

}  // namespace zox_test
