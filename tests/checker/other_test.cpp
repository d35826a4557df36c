// Maxima, window and level, the frame, and how the checker speaks.
#include "violations.h"
#include "zox_volume_names.h"

namespace checker_test {
namespace {

class Maxima : public testing::Test {
 protected:
  Maxima() : batch({0, 0, 0}, {0, 0, 0}) {}
  Batch batch;
  std::array<uint8_t, 2> mask = {255, 255};
  std::array<uint8_t, Batch::kRays> maxima = {};
};

TEST_F(Maxima, Nulls) {
  expect_sentence("zox_Volume_FindMax_8U: the ray batch record is null",
                  [&] { zox_Volume_FindMax_8U(nullptr, maxima.data()); });
  expect_sentence("zox_Volume_FindMax_8U: the array of maxima is null",
                  [&] { zox_Volume_FindMax_8U(&batch.rays, nullptr); });
  expect_sentence("zox_Volume_FindMaxBMask_8U: the mask is null",
                  [&] { zox_Volume_FindMaxBMask_8U(&batch.rays, nullptr, maxima.data()); });
  expect_sentence("zox_Volume_FindMaxCMask_8U: the mask is null",
                  [&] { __zox_Volume_FindMaxCMask_8U(&batch.rays, nullptr, 3, maxima.data()); });
  batch.planes[3] = nullptr;
  expect_sentence("zox_Volume_FindMax_8U: sample 3: planes[3] is null, but the largest sample count is 4",
                  [&] { __zox_Volume_FindMax_8U(&batch.rays, maxima.data()); });
  batch.rays.nsamples = nullptr;
  expect_sentence("zox_Volume_FindMax_8U: nsamples is null",
                  [&] { zox_Volume_FindMax_8U(&batch.rays, maxima.data()); });
}

TEST_F(Maxima, SixteenBits) {
  std::array<int16_t, Batch::kRays> wide;
  EXPECT_EQ(said([&] { zox_Volume_FindMax_16S(&batch.rays, wide.data()); }), "");
  EXPECT_EQ(said([&] { zox_Volume_FindMaxBMask_16S(&batch.rays, mask.data(), wide.data()); }), "");
  std::array<uint8_t, 4> bytes = {1, 2, 3, 4};
  EXPECT_EQ(said([&] { zox_Volume_FindMaxCMask_16S(&batch.rays, bytes.data(), 3, wide.data()); }), "");
  auto* odd = reinterpret_cast<int16_t*>(reinterpret_cast<char*>(wide.data()) + 1);
  expect_sentence("zox_Volume_FindMax_16S: the array of maxima is not aligned to its 16-bit elements",
                  [&] { zox_Volume_FindMax_16S(&batch.rays, odd); });
}

TEST_F(Maxima, OutputOverWhatIsRead) {
  expect_sentence("zox_Volume_FindMax_8U: sample 2: the array of maxima overlaps planes[2]",
                  [&] { zox_Volume_FindMax_8U(&batch.rays, static_cast<uint8_t*>(batch.planes[2]) + 1); });
  expect_sentence("zox_Volume_FindMaxBMask_8U: the array of maxima overlaps the mask",
                  [&] { zox_Volume_FindMaxBMask_8U(&batch.rays, mask.data(), mask.data()); });
  // Four samples take one byte of a bit mask; the second is no part of it.
  std::array<uint8_t, 1 + Batch::kRays> both = {255};
  EXPECT_EQ(said([&] { zox_Volume_FindMaxBMask_8U(&batch.rays, both.data(), both.data() + 1); }), "");
}

TEST_F(Maxima, WithoutRaysNothingIsRead) {
  batch.rays = {nullptr, 0, nullptr, nullptr, nullptr};
  EXPECT_EQ(said([&] { zox_Volume_FindMax_8U(&batch.rays, nullptr); }), "");
  batch.rays.nrays = -2;
  EXPECT_EQ(said([&] { zox_Volume_FindMax_8U(&batch.rays, nullptr); }), "");
  batch.rays.nrays = -3;  // ray 0 is processed
  expect_sentence("zox_Volume_FindMax_8U: nsamples is null",
                  [&] { zox_Volume_FindMax_8U(&batch.rays, maxima.data()); });
}

TEST_F(Maxima, EmptyRaysNeedNoPlanes) {
  batch.counts = {0, -4, 0};
  batch.rays.planes = nullptr;
  EXPECT_EQ(said([&] { zox_Volume_FindMaxBMask_8U(&batch.rays, nullptr, maxima.data()); }), "");
}

TEST(WindowLevel, Nulls) {
  const int16_t src = 5;
  uint8_t dst = 0;
  EXPECT_EQ(said([&] { zox_Volume_WindowLevel_16S_8U(&src, &dst, 1, 5, 10, 0, 255); }), "");
  EXPECT_EQ(said([&] { zox_Volume_WindowLevel_16S_8U(nullptr, nullptr, 0, 5, 10, 0, 255); }), "");
  expect_sentence("zox_Volume_WindowLevel_16S_8U: src is null, but len is 2",
                  [&] { zox_Volume_WindowLevel_16S_8U(nullptr, &dst, 2, 5, 10, 0, 255); });
  expect_sentence("zox_Volume_WindowLevel_16S_8U: dst is null, but len is 1",
                  [&] { __zox_Volume_WindowLevel_16S_8U(&src, nullptr, 1, 5, 10, 0, 255); });
}

TEST(Frame, ValidCallsPassQuietly) {
  void* block = nullptr;
  int count = 0;
  const std::string text = said([&] {
    block = zox_Malloc(100);
    zox_Free(block);
    zox_Free(__zox_Malloc(1));
    zox_Free(nullptr);
    EXPECT_EQ(zox_Malloc(0), nullptr);
    zox_SetNumThreads(7);
    __zox_GetNumThreads(&count);
    EXPECT_STREQ(zox_GetStringStatus(0), "No error");
    EXPECT_STREQ(__zox_GetVersion(), zoxid + 4);
    EXPECT_EQ(zox_AlignPointer(reinterpret_cast<void*>(65), 64), reinterpret_cast<void*>(128));
  });
  EXPECT_EQ(text, "");
  EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 64, 0u);
  EXPECT_EQ(count, 7);
}

TEST(Frame, Violations) {
  expect_sentence("zox_GetNumThreads: the pointer to the count is null", [] { zox_GetNumThreads(nullptr); });
  expect_sentence("zox_AlignPointer: the alignment is 48, but must be a power of two",
                  [] { zox_AlignPointer(nullptr, 48); });
  expect_sentence("zox_AlignPointer: the alignment is 0, but must be a power of two",
                  [] { __zox_AlignPointer(nullptr, 0); });
}

TEST(Frame, ForeignBlocks) {
  alignas(64) static std::array<uint64_t, 16> memory = {};
  void* foreign = memory.data() + 8;
  char text[96];
  std::snprintf(text, sizeof text, "zox_Free: the block at %p did not come from zox_Malloc", foreign);
  expect_sentence(text, [&] { zox_Free(foreign); });
  void* odd = memory.data() + 9;
  std::snprintf(text, sizeof text, "zox_Free: the block at %p did not come from zox_Malloc", odd);
  expect_sentence(text, [&] { __zox_Free(odd); });
}

TEST(Speech, AFewOfAKindThenTheirNumberAndTheCallGoesOn) {
  BlockedScene s;
  s.planes[1] = s.planes[0];
  s.counts = {4, 4, 4};
  zox_check_blocked(s.volume.data, 4);  // less than there is, so that the call is harmless
  int status = -1;
  const std::string text = said([&] {
    s.steps[0] = {0, 0, 0};  // ray by ray
    status = zox_Volume_RayCast_Blocked_Parallel_Nearest_8U(&s.volume, &s.rays);
  });
  zox_check_forget(s.volume.data);
  const std::string name = "zox_check: zox_Volume_RayCast_Blocked_Parallel_Nearest_8U: ";
  const std::string rest = ": z = 8, but this operation samples the volume at -0.5 <= z < 3.5.\n";
  EXPECT_EQ(text, name + "ray 0, sample 0" + rest + name + "ray 0, sample 1" + rest + name +
                      "ray 0, sample 2" + rest + name + "sample 1: planes[1] overlaps planes[0].\n" + name +
                      "9 more of the kinds above.\n");
  EXPECT_EQ(status, 0);
  EXPECT_EQ(s.plane_data[3][2], 7);  // the voxels are all 7
}

TEST(Speech, ResultsAreThoseOfTheLibrary) {
  BlockedScene s;
  for (size_t i = 0; i < s.voxels.size(); ++i) s.voxels[i] = static_cast<uint8_t>(i * 7);
  zox_Volume_RayCast_Blocked_Divergent_Nearest_8U(&s.volume, &s.rays);
  // Voxel (10, 20, 8) of a one-brick volume: cell x 2, y 5, z 4, inside the cell (2, 0, 0).
  EXPECT_EQ(s.plane_data[0][0], static_cast<uint8_t>((2 + (2 << 5) + (5 << 9) + (4 << 13)) * 7));
}

TEST(Silence, ValidScenes) {
  BlockedScene blocked;
  StackScene one_region(1), two_regions(2);
  for (const NamedCast& cast : kBlockedCasts) {
    EXPECT_EQ(said([&] { cast.call(&blocked.volume, &blocked.rays); }), "") << cast.name;
  }
  for (const NamedCast& cast : kGeneralCasts) {
    EXPECT_EQ(said([&] { cast.call(&one_region.volume, &one_region.rays); }), "") << cast.name;
    EXPECT_EQ(said([&] { cast.call(&two_regions.volume, &two_regions.rays); }), "") << cast.name;
  }
}

TEST(Silence, ScratchFromTheHeap) {
  StackScene s(2);
  s.counts = {600, 0, 0};
  s.steps[0] = {0, 0, 0};
  std::vector<void*> planes(600);
  std::vector<std::array<uint8_t, 2 * Batch::kRays>> data(600);
  for (int k = 0; k < 600; ++k) planes[k] = data[k].data();
  s.rays.planes = planes.data();
  for (const NamedCast& cast : kGeneralCasts) {
    EXPECT_EQ(said([&] { cast.call(&s.volume, &s.rays); }), "") << cast.name;
  }
}

}  // namespace
}  // namespace checker_test
