#include <algorithm>

#include "ray_batch.h"

namespace zox_test {

void Batch::make_blocked(Random& random) {
  const BlockedVolume volume = draw_blocked_volume(caster_, random);
  volume_.data = volume.buffer->data();
  volume_.size = volume.size;
  const double low = caster_.trilinear() ? 0.0 : -0.5;
  const double high = (caster_.trilinear() ? 1.0 : 0.5) + 0x1p-20;
  // Often a small corner of the volume, so that rays meet its sides and the seams of its bricks.
  Room room{{low, low, low},
            {volume.edge - high, volume.edge - high, volume.depth - high},
            {},
            0x1p-20,
            validity_ == Validity::kStrict};
  for (size_t a = 0; a < 3; ++a) {
    if (random.chance(0.4)) room.low[a] = std::max(low, room.high[a] - random.real(0, 20));
  }
  draw(room, random);
  cut_to_blocked(volume);
  if (volume.sparse) fill_sparse(volume, random);
}

void Batch::fill_sparse(const BlockedVolume& volume, Random& random) {
  const Contents contents = draw_contents(random);
  for (int r = 0; r < drawn_.nrays; ++r) {
    for (const bool second_way : {false, true}) {
      if (second_way && !caster_.parallel()) continue;
      for (const Voxel& v : trace(caster_, volume_, rays_, r, second_way)) {
        fill_cell(volume, v, caster_.element_size(), contents, random);
      }
    }
  }
}

void Batch::cut_to_blocked(const BlockedVolume& volume) {
  const int reach = caster_.trilinear() ? 1 : 0;
  const auto inside = [&](const Voxel& v) {
    return v.x >= 0 && v.x + reach < volume.edge && v.y >= 0 && v.y + reach < volume.edge && v.z >= 0 &&
           v.z + reach < volume.depth;
  };
  for (int r = 0; r < drawn_.nrays; ++r) {
    int32_t& count = drawn_.counts[static_cast<size_t>(r)];
    for (const bool second_way : {false, true}) {
      if (second_way && !caster_.parallel()) continue;
      const std::vector<Voxel> path = trace(caster_, volume_, rays_, r, second_way);
      const auto outside = std::find_if_not(path.begin(), path.end(), inside);
      if (outside != path.end()) count = static_cast<int32_t>(outside - path.begin());
    }
  }
}

}  // namespace zox_test
