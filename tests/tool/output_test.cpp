// The written file and what is said about it.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <limits>

#include "files.h"
#include "picture.h"
#include "run.h"

namespace {

using OutputTest = ToolTest;

constexpr char kSmall[] = " --size 16x12 ";

TEST_F(OutputTest, ReplacesAnOlderPictureAndLeavesNothingElse) {
  write_text(path("p.png"), "old");
  EXPECT_EQ(run(std::string("--phantom -o p.png --quiet") + kSmall).status, 0);
  const Picture picture = read_picture(path("p.png"));
  EXPECT_EQ(picture.width, 16);
  EXPECT_EQ(picture.height, 12);
  EXPECT_EQ(count_files(), 1);
}

TEST_F(OutputTest, PictureHasTheUsualPermissions) {
  EXPECT_EQ(run(std::string("--phantom -o p.png --quiet") + kSmall).status, 0);
  const mode_t mask = umask(0);
  umask(mask);
  struct stat status {};
  ASSERT_EQ(stat(path("p.png").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0666 & ~mask);
}

TEST_F(OutputTest, FailingRunLeavesTheOlderPicture) {
  write_text(path("p.png"), "old");
  expect_refusal("none.nii -o p.png", 1, "none.nii");
  expect_refusal("--phantom -o p.png --quiet --depth-range 500,600", 1, "no sample");
  expect_refusal("--phantom -o p.png --step 0", 2, "--step");
  EXPECT_EQ(read_text(path("p.png")), "old");
  EXPECT_EQ(count_files(), 1);
}

// With no room for the file (a limit on its length stands for a full disk) the older one stays.
TEST_F(OutputTest, FullDiskLeavesTheOlderPicture) {
  write_text(path("p.png"), "old");
  const Outcome outcome =
      shell("trap '' XFSZ; ulimit -f 1; " ZOX_MIP " --phantom -o p.png --quiet --size 400x400 --step 8");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.err.find("'p.png' cannot be written"), std::string::npos) << outcome.err;
  EXPECT_EQ(read_text(path("p.png")), "old");
  EXPECT_EQ(count_files(), 1);
}

TEST_F(OutputTest, UnwritablePlaces) {
  expect_refusal(std::string("--phantom --quiet -o none/p.png") + kSmall, 1, "cannot be written");
  mkdir(path("d").c_str(), 0777);
  expect_refusal(std::string("--phantom --quiet -o d") + kSmall, 1, "cannot be written");
  // A pipe of the test's own stands for devices: were it replaced, no harm would be done.
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0666), 0);
  expect_refusal(std::string("--phantom --quiet -o pipe") + kSmall, 1, "cannot be written");
  EXPECT_TRUE(std::filesystem::is_fifo(path("pipe")));
  EXPECT_EQ(count_files(), 2);
}

TEST_F(OutputTest, SaysWhatItDidInTwoLinesAndDrawsNoBar) {
  const Outcome outcome = run(std::string("--phantom -o p.png -j 2") + kSmall);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 2);
  EXPECT_TRUE(
      outcome.out.starts_with("phantom: 160 x 192 x 112 voxels of 1.2 x 1 x 1.6 mm, 16-bit signed, held "))
      << outcome.out;
  EXPECT_NE(outcome.out.find("\np.png: 16 x 12, window "), std::string::npos);
}

TEST_F(OutputTest, QuietSaysNothing) {
  const Outcome outcome = run(std::string("--phantom -o p.png --quiet") + kSmall);
  EXPECT_EQ(outcome.out + outcome.err, "");
}

TEST_F(OutputTest, DrawsABarOnATerminal) {
  if (shell("script -qec true /dev/null").status != 0) GTEST_SKIP() << "no pseudo-terminal here";
  const Outcome outcome = shell("script -qec '" ZOX_MIP " --phantom -o p.png -j1 --size 64x64' /dev/null");
  EXPECT_NE(outcome.out.find("100 %"), std::string::npos) << outcome.out;
}

TEST_F(OutputTest, HelpAndVersion) {
  const Outcome help = run("--help");
  EXPECT_EQ(help.status, 0);
  for (const char* word :
       {"--view",      "--projection", "--interpolation", "--size",        "--step",         "--window",
        "-j",          "--quiet",      "--layout",        "--depth-range", "--phantom",      "--slab",
        "--center",    "--reduction",  "--volume",        "--zoom",        "--no-skip",      "--stats",
        "--depth",     "--raw",        "--frames",        "--spin",        "--precision",    "--colormap",
        "--png-level", "--series",     "--read-seconds",  "--list-series", "--list-presets", "{name}"})
    EXPECT_NE(help.out.find(word), std::string::npos) << word;
  const Outcome version = run("--version");
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.out, "zox-mip " ZOX_VERSION "\n");
}

// Kept in steps that are told, and right to half a step; what is no number counts as the lowest.
TEST_F(OutputTest, FloatingPointIsScaledAndSaidSo) {
  TestVolume volume;
  volume.size = {3, 3, 3};
  volume.values.assign(27, -2.5);
  volume.values[12] = std::numeric_limits<double>::quiet_NaN();
  volume.values[13] = 2.5000916;
  volume.values[14] = 7.5;
  write_text(path("v.nrrd"), nrrd(volume, "float", raw_bytes<float>(volume)));
  const Outcome outcome =
      run("v.nrrd -o p.png --size 3x3 --projection orthographic --interpolation nearest --step 1 --slab 0 "
          "--window 2.5,10 --raw r.nrrd");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  const SampleFile raw = read_samples(path("r.nrrd"));
  char scale[80];
  std::snprintf(scale, sizeof scale, "value = %.9g + %.9g * stored\n", raw.intercept, raw.slope);
  EXPECT_NE(outcome.out.find(scale), std::string::npos) << outcome.out << scale;
  EXPECT_LT(raw.slope, 10.0 / 20000);
  const double values[] = {-2.5, 2.5000916, 7.5};
  for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(raw.values[3 + i], values[i], raw.slope / 2 * 1.0001);
  const Picture picture = read_picture(path("p.png"));
  EXPECT_EQ(picture.at(0, 1), 0);
  EXPECT_EQ(picture.at(1, 1), 127);
  EXPECT_EQ(picture.at(2, 1), 255);
}

TEST_F(OutputTest, IntegerTypesKeepTheirValues) {
  TestVolume volume = random_volume({5, 5, 5}, 0, 100, 7);
  const std::string how = " --size 20x20 --quiet --window 50,101 --interpolation nearest";
  write_text(path("a.nrrd"), nrrd(volume, "uchar", raw_bytes<uint8_t>(volume)));
  write_text(path("b.nrrd"), nrrd(volume, "signed char", raw_bytes<int8_t>(volume)));
  write_text(path("c.nrrd"), nrrd(volume, "ushort", raw_bytes<uint16_t>(volume)));
  write_text(path("d.nrrd"), nrrd(volume, "int", raw_bytes<int32_t>(volume)));
  write_text(path("e.nrrd"), nrrd(volume, "uint", raw_bytes<uint32_t>(volume)));
  write_text(path("f.nrrd"), nrrd(volume, "longlong", raw_bytes<int64_t>(volume)));
  write_text(path("g.nrrd"), nrrd(volume, "short", raw_bytes<int16_t>(volume)));
  ASSERT_EQ(run("a.nrrd -o p.png" + how).status, 0);
  const std::string bytes = read_text(path("p.png"));
  for (const char* name : {"b", "c", "d", "e", "f", "g"}) {
    const Outcome outcome = run(std::string(name) + ".nrrd -o p.png" + how);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(read_text(path("p.png")), bytes) << name;
  }
}

}  // namespace
