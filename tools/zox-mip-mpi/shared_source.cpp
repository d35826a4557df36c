#include "shared_source.h"

#include <algorithm>
#include <cstring>

namespace zox_mip_mpi {
namespace {

namespace parts = zox::parts;

size_t row_bytes(const parts::Part& part, size_t voxel) { return static_cast<size_t>(part.size[0]) * voxel; }
size_t slice_bytes(const parts::Part& part, size_t voxel) {
  return row_bytes(part, voxel) * static_cast<size_t>(part.size[1]);
}

// One slice of a part, packed.
void pack_slice(const zox_render_array& array, const parts::Part& part, int32_t z, std::byte* to) {
  const size_t voxel = parts::type_bytes(array.type);
  const auto* slice = static_cast<const std::byte*>(array.data) + z * array.strides[2];
  for (int32_t y = 0; y < part.size[1]; ++y) {
    const std::byte* row = slice + y * array.strides[1];
    if (array.strides[0] == static_cast<int64_t>(voxel)) {
      std::memcpy(to, row, row_bytes(part, voxel));
      to += row_bytes(part, voxel);
      continue;
    }
    for (int32_t x = 0; x < part.size[0]; ++x, to += voxel)
      std::memcpy(to, row + x * array.strides[0], voxel);
  }
}

bool same(const parts::Part& a, const parts::Part& b) { return a.first == b.first && a.size == b.size; }

}  // namespace

SharedSource::SharedSource(const Group& group, const std::string& name,
                           const zox::input::ReadOptions& options, zox::input::Scan scan)
    : Source(name), group_(group) {
  whole_ = scan.array;
  whole_.data = nullptr;
  group.share(&whole_, sizeof whole_);
  positions_ = scan.positions;
  uint64_t count = positions_.size();
  group.share(&count, sizeof count);
  positions_.resize(count);
  group.share(positions_.data(), count * sizeof(double));
  whole_.positions = positions_.empty() ? nullptr : positions_.data();
  file_ = group.share(scan.file);
  uint64_t offset = scan.offset;
  group.share(&offset, sizeof offset);
  in_blocks_ = scan.blocks.has_value();
  group.share(&in_blocks_, sizeof in_blocks_);
  if (group.is_root()) {
    local_ = parts::source_of(name, std::move(scan));
  } else if (is_in_file()) {
    zox::input::Scan there;
    there.array = whole_;
    there.file = file_;
    there.offset = offset;
    if (in_blocks_) there.blocks = zox::input::Blocks{name, options};
    local_ = parts::source_of(name, std::move(there));
  }
}

parts::PartArray SharedSource::take(const parts::Part& part) const {
  if (local_) return local_->take(part);
  const auto found =
      std::find_if(received_.begin(), received_.end(), [&](const Received& r) { return same(r.part, part); });
  if (found == received_.end()) throw zox::input::Failure("A part was not received.");
  parts::PartArray result;
  result.array = description(part);
  result.array.data = found->voxels.data();
  std::fill(std::begin(result.array.strides), std::end(result.array.strides), 0);
  return result;
}

void SharedSource::distribute(const std::vector<std::vector<parts::Part>>& parts_of_ranks) {
  if (is_in_file()) return;
  const size_t voxel = parts::type_bytes(whole_.type);
  std::vector<std::byte> slice;
  for (int rank = 1; rank < group_.size(); ++rank)
    for (const parts::Part& part : parts_of_ranks[static_cast<size_t>(rank)]) {
      const size_t bytes = slice_bytes(part, voxel);
      if (group_.is_root()) {
        const parts::PartArray array = local_->take(part);
        slice.resize(bytes);
        for (int32_t z = 0; z < part.size[2]; ++z) {
          pack_slice(array.array, part, z, slice.data());
          MPI_Send(slice.data(), static_cast<int>(bytes), MPI_BYTE, rank, 0, group_.communicator());
        }
      } else if (group_.rank() == rank) {
        received_.push_back({part, std::vector<std::byte>(bytes * static_cast<size_t>(part.size[2]))});
        for (int32_t z = 0; z < part.size[2]; ++z)
          MPI_Recv(received_.back().voxels.data() + static_cast<size_t>(z) * bytes, static_cast<int>(bytes),
                   MPI_BYTE, 0, 0, group_.communicator(), MPI_STATUS_IGNORE);
      }
    }
}

}  // namespace zox_mip_mpi
