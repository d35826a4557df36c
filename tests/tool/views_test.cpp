// Several pictures in one run, turns, colours, and what is said of the work.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "files.h"
#include "picture.h"
#include "run.h"

namespace {

class ViewsTest : public ToolTest {
 protected:
  void SetUp() override {
    // Cubes look as large from each side.
    const TestVolume volume = random_volume({16, 16, 16}, 0, 255, 6);
    write_text(path("v.nrrd"), nrrd(volume, "uchar", raw_bytes<uint8_t>(volume)));
  }
  void show(const std::string& arguments) const {
    const Outcome outcome = run("v.nrrd --size 40x36 --projection orthographic " + arguments);
    ASSERT_EQ(outcome.status, 0) << outcome.err;
  }
};

TEST_F(ViewsTest, EachViewIsThePictureOfItsOwnRun) {
  show("-o a-{view}.png --raw r-{view}.npy --view left --view TOP --view 30,20 --quiet");
  EXPECT_EQ(count_files(), 7);
  const std::pair<const char*, const char*> views[] = {
      {"left", "left"}, {"top", "superior"}, {"30,20", "30,20"}};
  for (const auto& [name, view] : views) {
    show("-o b.png --raw b.npy --quiet --view " + std::string(view));
    EXPECT_EQ(read_text(path("a-" + std::string(name) + ".png")), read_text(path("b.png"))) << name;
    EXPECT_EQ(read_text(path("r-" + std::string(name) + ".npy")), read_text(path("b.npy"))) << name;
  }
}

// A quarter of a turn brings the patient's left before the viewer, then the back, then the right.
TEST_F(ViewsTest, TurnsAroundThePatient) {
  show("-o z-{frame}.png --frames 4 --quiet");
  show("-o x-{frame}.png --frames 4 --spin x --quiet");
  const std::pair<const char*, const char*> frames[] = {
      {"z-0", "0,0"}, {"z-1", "90,0"}, {"z-2", "180,0"}, {"z-3", "270,0"}, {"x-0", "0,0"}};
  for (const auto& [frame, view] : frames) {
    show("-o b.png --quiet --view " + std::string(view));
    EXPECT_EQ(read_picture(path(std::string(frame) + ".png")).grey, read_picture(path("b.png")).grey)
        << frame;
  }
  // Around the axis to the left, the head comes to the front or goes: both seen with the face up or down.
  show("-o b.png --quiet --view 0,-90");
  const std::vector<uint8_t> below = read_picture(path("b.png")).grey;
  EXPECT_TRUE(read_picture(path("x-1.png")).grey == below || read_picture(path("x-3.png")).grey == below);
}

TEST_F(ViewsTest, AnimationsHoldAllFrames) {
  show("-o turn.png --frames 5 --quiet");
  show("-o f-{frame}.png --frames 5 --quiet");
  size_t frame = 0;
  for (const Chunk& chunk : read_chunks(path("turn.png"))) {
    if (chunk.type != "IDAT" && chunk.type != "fdAT") continue;
    const std::string own = read_chunks(path("f-" + std::to_string(frame++) + ".png")).at(1).content;
    EXPECT_EQ(chunk.type == "IDAT" ? chunk.content : chunk.content.substr(4), own);
  }
  EXPECT_EQ(frame, 5U);
}

TEST_F(ViewsTest, ColoursStandForGreys) {
  show("-o grey.png --quiet");
  show("-o inverse.png --quiet --colormap inverse");
  const std::vector<uint8_t> grey = read_colours(path("grey.png"));
  const std::vector<uint8_t> inverse = read_colours(path("inverse.png"));
  ASSERT_EQ(grey.size(), inverse.size());
  for (size_t i = 0; i < grey.size(); ++i) EXPECT_EQ(grey[i], 255 - inverse[i]);
  for (const char* map : {"hot", "diverging"}) show("-o c.png --quiet --colormap " + std::string(map));
}

TEST_F(ViewsTest, NumbersMeanTheSameInEveryFormat) {
  show("-o a.png --quiet --view 30,20 --raw r.nrrd --depth d.npy");
  show("-o a.png --quiet --view 30,20 --raw r.png --depth d.png");
  show("-o a.png --quiet --view 30,20 --raw r.npy");
  const SampleFile samples = read_samples(path("r.nrrd"));
  const std::string shorts = read_npy(path("r.npy"), "<i2");
  const std::vector<float> depths = read_floats(path("d.npy"));
  const Deep raw = read_deep(path("r.png"));
  const Deep deep = read_deep(path("d.png"));
  double raw_from = 0, raw_step = 0, depth_from = 0, depth_step = 0;
  ASSERT_EQ(std::sscanf(raw.description.c_str(), "value = %lf + %lf * pixel", &raw_from, &raw_step), 2);
  ASSERT_EQ(
      std::sscanf(deep.description.c_str(), "depth in mm = %lf + %lf * pixel", &depth_from, &depth_step), 2);
  ASSERT_EQ(raw.pixels.size(), samples.values.size());
  ASSERT_EQ(shorts.size(), 2 * samples.values.size());
  int seen = 0;
  for (size_t i = 0; i < raw.pixels.size(); ++i) {
    int16_t stored;
    std::memcpy(&stored, shorts.data() + 2 * i, 2);
    const bool none = raw.pixels[i] == 0;
    EXPECT_EQ(none, deep.pixels[i] == 0);
    EXPECT_EQ(none, stored == -32768);
    EXPECT_EQ(none, std::isnan(samples.values[i]));
    EXPECT_EQ(none, std::isnan(depths[i]));
    if (none) continue;
    ++seen;
    EXPECT_NEAR(raw_from + raw_step * raw.pixels[i], samples.values[i], 1e-9);
    EXPECT_NEAR(samples.intercept + samples.slope * stored, samples.values[i], 1e-9);
    EXPECT_NEAR(depth_from + depth_step * deep.pixels[i], depths[i], 1e-5);
  }
  EXPECT_GT(seen, 300);
}

TEST_F(ViewsTest, StandardOutputHoldsThePictureAlone) {
  show("-o a.png --quiet");
  const Outcome outcome = run("v.nrrd --size 40x36 --projection orthographic -o -");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, read_text(path("a.png")));
  EXPECT_TRUE(outcome.err.starts_with("v.nrrd: 16 x 16 x 16 voxels")) << outcome.err;
}

TEST_F(ViewsTest, StatisticsAreOneLine) {
  const Outcome outcome = run("v.nrrd -o 'a\"{view}.png' --stats --view left --view right");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 1);
  write_text(path("stats"), outcome.out);
  const Outcome judged = shell(
      "python3 -c 'import json; s = json.load(open(\"stats\")); assert s[\"size\"] == [16, 16, 16]; "
      "assert [p[\"output\"] for p in s[\"pictures\"]] == [chr(97) + chr(34) + v + \".png\" for v in "
      "(\"left\", \"right\")]; assert all(p[\"samples\"] >= p[\"samples_cast\"] > 0 for p in "
      "s[\"pictures\"])'");
  EXPECT_EQ(judged.status, 0) << judged.err;
}

// A lesion of a few voxels: black is what three quarters do not exceed, also when all of that is one value.
TEST_F(ViewsTest, SparseVolumesShow) {
  TestVolume mask;
  mask.size = {15, 15, 15};
  mask.values.assign(15 * 15 * 15, 0);
  mask.values[static_cast<size_t>(7 + 15 * 7 + 225 * 7)] = 1;
  write_text(path("m.nrrd"), nrrd(mask, "uchar", raw_bytes<uint8_t>(mask)));
  const Outcome outcome =
      run("m.nrrd -o m.png --size 15x15 --projection orthographic --interpolation nearest --step 1");
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  const Picture picture = read_picture(path("m.png"));
  for (int row = 0; row < 15; ++row)
    for (int column = 0; column < 15; ++column)
      EXPECT_EQ(picture.at(column, row), column == 7 && row == 7 ? 255 : 0) << column << ", " << row;
  mask.values.assign(mask.values.size(), 0);
  write_text(path("z.nrrd"), nrrd(mask, "uchar", raw_bytes<uint8_t>(mask)));
  ASSERT_EQ(run("z.nrrd -o z.png --size 15x15 --quiet").status, 0);
  for (const uint8_t grey : read_picture(path("z.png")).grey) EXPECT_EQ(grey, 0);
}

// Interrupted at any moment, a run leaves the older picture or its own, whole, and nothing else.
TEST_F(ViewsTest, InterruptionsLeaveNothing) {
  show("-o p.png --quiet");
  const std::string old = read_text(path("p.png"));
  const int files = count_files();
  for (int i = 0; i < 12; ++i) {
    const char* signal = i % 2 ? "INT" : "TERM";
    shell("timeout --preserve-status -s " + std::string(signal) + " 0." + std::to_string(10 + 7 * i) +
          " " ZOX_MIP " --phantom -o p.png --quiet --size 1500x1500 --step 0.3");
    EXPECT_EQ(count_files(), files);
    EXPECT_GT(read_picture(path("p.png")).width, 0);
  }
}

}  // namespace
