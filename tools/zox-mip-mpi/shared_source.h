// A volume that the root has read or found, as every rank takes its parts of it.
#pragma once

#include <parts/source.h>

#include <memory>
#include <vector>

#include "group.h"

namespace zox_mip_mpi {

// Called by all; the root's scan counts. A scan left in its file or files is read by every rank from there.
// Of one that lies in the root's memory, the ranks get their parts by distribute().
class SharedSource : public zox::parts::Source {
 public:
  // `options` are those that the root has read by.
  SharedSource(const Group& group, const std::string& name, const zox::input::ReadOptions& options,
               zox::input::Scan scan);

  const zox_render_array& whole() const override { return whole_; }
  zox::parts::PartArray take(const zox::parts::Part& part) const override;

  bool is_in_file() const { return !file_.empty() || in_blocks_; }
  // Sends every rank the parts that it is to take, the same list of lists on all ranks.
  void distribute(const std::vector<std::vector<zox::parts::Part>>& parts_of_ranks);

 private:
  const Group& group_;
  std::vector<double> positions_;
  zox_render_array whole_{};
  std::string file_;
  bool in_blocks_ = false;
  std::unique_ptr<zox::parts::Source> local_;  // the file, or the root's memory
  struct Received {
    zox::parts::Part part;
    std::vector<std::byte> voxels;
  };
  std::vector<Received> received_;
};

}  // namespace zox_mip_mpi
