// Pointers, counts, limits and overlaps: one test a kind of violation.
#include "violations.h"

namespace checker_test {
namespace {

constexpr auto kBdn = zox_Volume_RayCast_Blocked_Divergent_Nearest_8U;
constexpr auto kBpn = zox_Volume_RayCast_Blocked_Parallel_Nearest_8U;
constexpr auto kGdn = zox_Volume_RayCast_General_Divergent_Nearest_8U;
constexpr auto kGdt = zox_Volume_RayCast_General_Divergent_Trilinear_8U;
constexpr auto kGpn = zox_Volume_RayCast_General_Parallel_Nearest_16S;
const std::string kBdnName = "zox_Volume_RayCast_Blocked_Divergent_Nearest_8U: ";
const std::string kBpnName = "zox_Volume_RayCast_Blocked_Parallel_Nearest_8U: ";
const std::string kGdnName = "zox_Volume_RayCast_General_Divergent_Nearest_8U: ";
const std::string kGdtName = "zox_Volume_RayCast_General_Divergent_Trilinear_8U: ";
const std::string kGpnName = "zox_Volume_RayCast_General_Parallel_Nearest_16S: ";

TEST(Records, NullRecords) {
  BlockedScene s;
  expect_sentence(kBdnName + "the volume record is null", [&] { kBdn(nullptr, &s.rays); });
  expect_sentence(kBdnName + "the ray batch record is null", [&] { kBdn(&s.volume, nullptr); });
}

TEST(Records, SecondNamesAreCheckedToo) {
  BlockedScene s;
  for (const NamedCast& cast : kBlockedCasts) {
    const std::string name = cast.name + (cast.name[0] == '_' ? 2 : 0);
    expect_sentence(name + ": the volume record is null", [&] { cast.call(nullptr, &s.rays); });
  }
  for (const NamedCast& cast : kGeneralCasts) {
    const std::string name = cast.name + (cast.name[0] == '_' ? 2 : 0);
    expect_sentence(name + ": the volume record is null", [&] { cast.call(nullptr, &s.rays); });
  }
}

TEST(Records, NullArraysOfTheBatch) {
  BlockedScene s;
  const zox_Rays good = s.rays;
  const auto call = [&] { kBdn(&s.volume, &s.rays); };
  s.rays.starts = nullptr;
  expect_sentence(kBdnName + "starts is null", call);
  s.rays = good;
  s.rays.steps = nullptr;
  expect_sentence(kBdnName + "steps is null", call);
  s.rays = good;
  s.rays.nsamples = nullptr;
  expect_sentence(kBdnName + "nsamples is null", call);
  s.rays = good;
  s.rays.planes = nullptr;
  expect_sentence(kBdnName + "planes is null", call);
}

TEST(Records, NullStartOrStepOfOneRay) {
  BlockedScene s;
  s.step_pointers[2] = nullptr;
  expect_sentence(kBdnName + "ray 2: its step vector is null", [&] { kBdn(&s.volume, &s.rays); });
  s.start_pointers[1] = nullptr;
  expect_sentence(kBdnName + "ray 1: its start point is null", [&] { kBdn(&s.volume, &s.rays); });
}

TEST(Records, ParallelOperationsNeedOnlyTheFirstStep) {
  BlockedScene s;
  s.step_pointers[1] = s.step_pointers[2] = nullptr;
  EXPECT_EQ(said([&] { kBpn(&s.volume, &s.rays); }), "");
  s.step_pointers[0] = nullptr;
  expect_sentence(kBpnName + "ray 0: its step vector is null", [&] { kBpn(&s.volume, &s.rays); });
}

TEST(Records, MissingPlane) {
  BlockedScene s;
  s.planes[4] = nullptr;  // the longest ray has four samples
  EXPECT_EQ(said([&] { kBdn(&s.volume, &s.rays); }), "");
  s.planes[3] = nullptr;
  expect_sentence(kBdnName + "sample 3: planes[3] is null, but the largest sample count is 4",
                  [&] { kBdn(&s.volume, &s.rays); });
}

TEST(Records, RayCount) {
  StackScene s(1);
  s.rays.nrays = 65;
  expect_sentence(kGdnName + "nrays is 65, but this operation takes at most 64 rays",
                  [&] { kGdn(&s.volume, &s.rays); });
}

TEST(Records, WithoutRaysOnlyWhatIsStillRead) {
  BlockedScene blocked;
  blocked.rays = {nullptr, 0, nullptr, nullptr, nullptr};
  EXPECT_EQ(said([&] { kBdn(&blocked.volume, &blocked.rays); }), "");
  EXPECT_EQ(said([&] { kBpn(&blocked.volume, &blocked.rays); }), "");
  StackScene stack(1);
  stack.rays = {nullptr, 0, nullptr, nullptr, nullptr};
  EXPECT_EQ(said([&] { kGpn(&stack.volume, &stack.rays); }), "");
  expect_sentence(kGdnName + "nsamples is null", [&] { kGdn(&stack.volume, &stack.rays); });
  stack.rays.nsamples = stack.counts.data();
  EXPECT_EQ(said([&] { kGdn(&stack.volume, &stack.rays); }), "");
  expect_sentence("zox_Volume_RayCast_General_Parallel_Trilinear_8U: steps is null",
                  [&] { zox_Volume_RayCast_General_Parallel_Trilinear_8U(&stack.volume, &stack.rays); });
}

TEST(Records, NegativeSampleCounts) {
  BlockedScene blocked;
  blocked.counts[1] = -2;
  EXPECT_EQ(said([&] { kBdn(&blocked.volume, &blocked.rays); }), "");
  expect_sentence(kBpnName + "ray 1: its sample count is -2, but must not be negative",
                  [&] { kBpn(&blocked.volume, &blocked.rays); });
  StackScene one_region(1);
  one_region.counts[2] = -1;
  expect_sentence(kGpnName + "ray 2: its sample count is -1, but must not be negative",
                  [&] { kGpn(&one_region.volume, &one_region.rays); });
}

TEST(Records, SampleCountBeyondTheNodeStore) {
  StackScene s(2);
  s.counts[0] = 1 << 22;
  expect_sentence(kGdnName + "the largest sample count is 4194304, but this operation takes at most 4194303",
                  [&] { kGdn(&s.volume, &s.rays); });
  s.counts[0] = 1 << 21;
  expect_sentence(kGdtName + "the largest sample count is 2097152, but this operation takes at most 2097151",
                  [&] { kGdt(&s.volume, &s.rays); });
}

TEST(Records, BlockedSizeAndData) {
  BlockedScene s;
  const auto call = [&] { kBdn(&s.volume, &s.rays); };
  s.volume.size = 0;
  expect_sentence(kBdnName + "size is 0, but must be 1 to 2048", call);
  s.volume.size = 2049;
  expect_sentence(kBdnName + "size is 2049, but must be 1 to 2048", call);
  s.volume.size = 64;
  s.volume.data = nullptr;
  expect_sentence(kBdnName + "data is null", call);
}

TEST(Records, NullTablesOfTheStack) {
  StackScene s(2);
  const zox_Volume good = s.volume;
  const auto call = [&] { kGdn(&s.volume, &s.rays); };
  s.volume.slices = nullptr;
  expect_sentence(kGdnName + "slices is null", call);
  s.volume = good;
  s.volume.rowoffs = nullptr;
  expect_sentence(kGdnName + "rowoffs is null", call);
  s.volume = good;
  s.volume.regslice = nullptr;
  expect_sentence(kGdnName + "regslice is null", call);
  s.volume = good;
  s.volume.regbounds = nullptr;
  expect_sentence(kGdnName + "regbounds is null", call);
  s.volume = good;
  s.volume.regscale = nullptr;
  expect_sentence(kGdnName + "regscale is null", call);
}

TEST(Records, Regions) {
  StackScene s(2);
  s.volume.nregions = 0;
  expect_sentence(kGdnName + "nregions is 0, but a volume has at least one region",
                  [&] { kGdn(&s.volume, &s.rays); });
  s.volume.nregions = 2;
  s.regbounds[1] = 13;
  expect_sentence(kGdnName + "regbounds[1] = 13 and regbounds[2] = 12 do not ascend",
                  [&] { kGdn(&s.volume, &s.rays); });
}

TEST(Records, Alignment) {
  BlockedScene s;
  const auto call = [&] { zox_Volume_RayCast_Blocked_Divergent_Nearest_16S(&s.volume, &s.rays); };
  const std::string name = "zox_Volume_RayCast_Blocked_Divergent_Nearest_16S: ";
  std::array<uint8_t, 16> room;
  s.planes[1] = room.data() + (reinterpret_cast<uintptr_t>(room.data()) % 2 == 0 ? 1 : 0);
  expect_sentence(name + "sample 1: planes[1] is not aligned to its 16-bit elements", call);
  EXPECT_EQ(said([&] { kBdn(&s.volume, &s.rays); }), "");
  s.volume.data = s.voxels.data() + 1;
  expect_sentence(name + "data is not aligned to 16-bit voxels", call);
}

TEST(Records, OverlappingPlanes) {
  BlockedScene s;
  s.planes[3] = static_cast<uint8_t*>(s.planes[1]) + 2;
  expect_sentence(kBdnName + "sample 3: planes[3] overlaps planes[1]", [&] { kBdn(&s.volume, &s.rays); });
  s.planes[3] = static_cast<uint8_t*>(s.planes[1]) + 3;  // three rays, one byte each
  EXPECT_EQ(said([&] { kBdn(&s.volume, &s.rays); }), "");
}

TEST(Records, PlanesOverTheRayDescription) {
  BlockedScene s;
  s.planes[2] = s.counts.data();
  expect_sentence(kBdnName + "sample 2: planes[2] overlaps nsamples", [&] { kBdn(&s.volume, &s.rays); });
  s.planes[2] = s.starts[1].data();
  expect_sentence(kBdnName + "ray 1, sample 2: planes[2] overlaps starts[1]",
                  [&] { kBdn(&s.volume, &s.rays); });
  s.planes[2] = &s.rays;
  expect_sentence(kBdnName + "sample 2: planes[2] overlaps the ray batch record",
                  [&] { kBdn(&s.volume, &s.rays); });
}

}  // namespace
}  // namespace checker_test
