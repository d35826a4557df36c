// A volume in the form in which the library samples it.
#pragma once

#include <zox_volume.h>

#include <cstddef>
#include <memory>
#include <vector>

#include "options.h"
#include "volume.h"

namespace zox_mip {

class PackedVolume {
 public:
  // Blocked: the voxels are copied into bricks and the volume's own are released. Stack: every slice
  // stays where it is. Throws Failure if the layout cannot hold the volume.
  PackedVolume(Volume& volume, Layout layout);
  PackedVolume(const PackedVolume&) = delete;
  PackedVolume& operator=(const PackedVolume&) = delete;

  const zox_Volume& record() const { return record_; }

 private:
  void pack_blocks(Volume& volume);
  void point_at_slices(const Volume& volume);

  struct Free {
    void operator()(void* block) const;
  };
  zox_Volume record_{};
  std::unique_ptr<void, Free> blocks_;
  std::vector<const void*> slices_;
  std::vector<int32_t> row_offsets_;
  double bounds_[2] = {};
};

}  // namespace zox_mip
