// A volume whose parts lie on many ranks, and its pictures.
#pragma once

#include <parts/picture.h>

#include <functional>
#include <vector>

#include "group.h"

namespace zox_mip_mpi {

struct SpreadSource {
  const zox::parts::Source& source;
  // Every rank can take any part; otherwise the root alone, until parts are distributed.
  bool everywhere = true;
  std::function<void(const std::vector<std::vector<zox::parts::Part>>& parts_of_ranks)> distribute;
};

class SpreadVolume {
 public:
  // By all ranks together: measures the volume and cuts it into parts of about equal work, `longest`
  // voxels a side at most and none of more than `memory` bytes, which is the same on all. A rank keeps its
  // parts ready where they take no more than that together; otherwise it makes them anew, one at a time,
  // for every picture. Throws GroupFailure on all. The source must outlive the volume.
  SpreadVolume(const Group& group, const SpreadSource& from, const zox::parts::Settings& settings,
               int32_t longest, uint64_t memory);

  // By all ranks together; the picture is the root's, cast the number of samples that this rank took.
  zox::parts::Picture render(const zox::parts::Settings& settings, int64_t& cast) const;

  // A corner of the volume, to ask for the geometry of views.
  const zox_render_volume* corner() const { return corner_->handle(); }
  size_t parts() const { return parts_.size(); }
  uint64_t voxels() const { return voxels_; }

 private:
  const Group& group_;
  const zox::parts::Source& source_;
  zox::parts::Measure measure_;
  std::vector<zox::parts::Part> parts_;
  std::vector<std::unique_ptr<zox::parts::PartVolume>> kept_;
  std::unique_ptr<zox::parts::PartVolume> corner_;
  uint64_t voxels_ = 0;
};

}  // namespace zox_mip_mpi
