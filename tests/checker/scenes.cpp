#include "scenes.h"

#include "operations/list.h"
#include "zox_volume_names.h"

namespace checker_test {

Batch::Batch(Point first_start, Point step) : plane_data(kPlanes), rays{} {
  for (int r = 0; r < kRays; ++r) {
    starts[r] = {first_start[0] + r, first_start[1], first_start[2] + 0.125 * r};
    steps[r] = step;
    start_pointers[r] = starts[r].data();
    step_pointers[r] = steps[r].data();
  }
  for (auto& plane : plane_data) planes.push_back(plane.data());
  rays.planes = planes.data();
  rays.nrays = kRays;
  rays.starts = start_pointers.data();
  rays.steps = step_pointers.data();
  rays.nsamples = counts.data();
}

BlockedScene::BlockedScene() : Batch({10, 20, 8}, {0.5, 0.25, 1}), voxels(64 * 64 * 32 * 2, 7), volume{} {
  volume.data = voxels.data();
  volume.size = 64;
}

StackScene::StackScene(int regions)
    : Batch({3, 4, 1}, {0.5, 0.25, 1}),
      slice_data(kSlices + 1, std::vector<uint8_t>(kRows * kColumns * 2, 5)),
      regslice(regions == 1 ? std::vector<int32_t>{0} : std::vector<int32_t>{0, 4}),
      regbounds(regions == 1 ? std::vector<double>{0, 8} : std::vector<double>{0, 4, 12}),
      regscale(regions == 1 ? std::vector<double>{1} : std::vector<double>{1, 0.5}),
      volume{} {
  for (const auto& slice : slice_data) slices.push_back(slice.data());
  for (int y = 0; y < kRows; ++y) rowoffs.push_back(y * kColumns * 2);
  volume.slices = slices.data();
  volume.rowoffs = rowoffs.data();
  volume.nslices = kSlices;
  volume.nregions = regions;
  volume.regslice = regslice.data();
  volume.regbounds = regbounds.data();
  volume.regscale = regscale.data();
}

#define BOTH(Name, ...)                                     \
  {"zox_Volume_RayCast_" #Name, zox_Volume_RayCast_##Name}, \
      {"__zox_Volume_RayCast_" #Name, __zox_Volume_RayCast_##Name},

const std::vector<NamedCast> kBlockedCasts = {ZOX_BLOCKED_CASTERS(BOTH)};
const std::vector<NamedCast> kGeneralCasts = {ZOX_GENERAL_CASTERS(BOTH)};

}  // namespace checker_test
