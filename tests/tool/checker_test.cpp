// The renderer keeps the library's contract: the checker, which knows the sizes of the volume, finds
// nothing to say.
#include <gtest/gtest.h>

#include "files.h"
#include "run.h"

namespace {

class CheckerTest : public ToolTest {
 protected:
  void SetUp() override {
#ifndef ZOX_CHECKER
    GTEST_SKIP() << "built without the checker";
#endif
  }

  // Small steps and every way to hold and sample the volume.
  void expect_silence(const std::string& volume) const {
    for (const char* projection : {"perspective", "orthographic"})
      for (const char* interpolation : {"nearest", "trilinear"})
        for (const char* layout : {"blocked", "stack"}) {
          const std::string how = std::string(" --projection ") + projection + " --interpolation " +
                                  interpolation + " --layout " + layout;
          for (const char* more : {" --view anterior --step 1", " --view 10,15 --step 0.2",
                                   " --view 200,-40 --depth-range -3,30"}) {
            const Outcome outcome = checked(volume + how + more + " -o p.png --quiet --size 41x45");
            EXPECT_EQ(outcome.status, 0) << how << more;
            EXPECT_EQ(outcome.err, "") << how << more;
          }
        }
  }

 private:
  Outcome checked(const std::string& arguments) const {
#ifdef ZOX_CHECKER
    return shell("ZOX_CHECK=abort LD_PRELOAD=" ZOX_CHECKER " " ZOX_MIP " " + arguments);
#else
    return run(arguments);
#endif
  }
};

TEST_F(CheckerTest, FindsNothingInSmallVolumes) {
  const TestVolume volume = random_volume({64, 37, 32}, 0, 255, 8);
  write_text(path("v.nrrd"), nrrd(volume, "uchar", raw_bytes<uint8_t>(volume)));
  expect_silence("v.nrrd");
  const TestVolume thin = random_volume({2, 3, 2}, -50, 50, 9);
  write_text(path("w.nrrd"), nrrd(thin, "short", raw_bytes<int16_t>(thin)));
  expect_silence("w.nrrd");
}

// Deeper than the tables of the parallel nearest operations.
TEST_F(CheckerTest, FindsNothingInManySlices) {
  const TestVolume volume = random_volume({6, 7, 600}, 0, 255, 10);
  write_text(path("v.nrrd"), nrrd(volume, "uchar", raw_bytes<uint8_t>(volume)));
  expect_silence("v.nrrd");
}

}  // namespace
