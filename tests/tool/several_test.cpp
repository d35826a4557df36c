// Several volumes in one run.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "files.h"
#include "run.h"

namespace {

class SeveralTest : public ToolTest {
 protected:
  void write_volume(const std::string& name, unsigned seed) const {
    const TestVolume volume = random_volume({9, 8, 7}, 0, 200, seed);
    write_text(path(name), nrrd(volume, "uchar", raw_bytes<uint8_t>(volume)));
  }
  static std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    for (size_t begin = 0; begin < text.size();) {
      const size_t end = std::min(text.find('\n', begin), text.size());
      lines.push_back(text.substr(begin, end - begin));
      begin = end + 1;
    }
    return lines;
  }
  static bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
  }
};

constexpr char kHow[] = " --size 24x20 ";

TEST_F(SeveralTest, GivesThePicturesOfEach) {
  write_volume("a.nrrd", 1);
  write_volume("b.nrrd", 2);
  const Outcome both = run(std::string("a.nrrd b.nrrd -o {name}-{view}.png --view left --view 30,20") + kHow);
  EXPECT_EQ(both.status, 0);
  EXPECT_EQ(both.err, "");
  for (const std::string name : {"a", "b"})
    for (const std::string view : {"left", "30,20"}) {
      SCOPED_TRACE(name + view);
      ASSERT_EQ(run(name + ".nrrd -o one.png --quiet --view " + view + kHow).status, 0);
      EXPECT_EQ(read_text(path(name + "-" + view + ".png")), read_text(path("one.png")));
    }
  EXPECT_NE(read_text(path("a-left.png")), read_text(path("b-left.png")));
  EXPECT_EQ(count_files(), 2 + 4 + 1);
}

TEST_F(SeveralTest, ABadOneStopsNoOther) {
  write_volume("a.nrrd", 1);
  write_volume("b.nrrd", 2);
  write_text(path("cut.nrrd"), read_text(path("a.nrrd")).substr(0, 300));
  const Outcome outcome = run(std::string("cut.nrrd a.nrrd none.nii b.nrrd -o {name}.png") + kHow);
  EXPECT_EQ(outcome.status, 1);
  const std::vector<std::string> said = lines_of(outcome.err);
  ASSERT_EQ(said.size(), 2U) << outcome.err;
  EXPECT_TRUE(said[0].starts_with("zox-mip: 'cut.nrrd' is damaged or cut short")) << said[0];
  EXPECT_EQ(said[1], "zox-mip: There is no file 'none.nii'.");
  for (const char* name : {"a.png", "b.png"}) EXPECT_TRUE(std::filesystem::exists(path(name)));
  EXPECT_EQ(count_files(), 3 + 2);
  const std::vector<std::string> table = lines_of(outcome.out.substr(outcome.out.find("\n\n") + 2));
  ASSERT_EQ(table.size(), 6U) << outcome.out;
  EXPECT_TRUE(std::regex_match(table[1], std::regex("cut\\.nrrd +failed"))) << table[1];
  EXPECT_TRUE(std::regex_match(table[2], std::regex("a\\.nrrd +9 x 8 x 7 +1 x 1 x 1 +1 +[0-9.]+")))
      << table[2];
  EXPECT_TRUE(std::regex_match(table[3], std::regex("none\\.nii +failed"))) << table[3];
  EXPECT_TRUE(table[5].starts_with("2 of 4 volumes shown, 2 pictures in ")) << table[5];
}

TEST_F(SeveralTest, StatsAreALineForEachAndOneForAll) {
  write_volume("a.nrrd", 1);
  write_text(path("b\"\xff.nrrd"), "NRRD");
  const Outcome outcome = run(std::string("a.nrrd b*.nrrd -o {name}.png --stats") + kHow);
  EXPECT_EQ(outcome.status, 1);
  const std::vector<std::string> lines = lines_of(outcome.out);
  ASSERT_EQ(lines.size(), 3U) << outcome.out;
  EXPECT_TRUE(lines[0].starts_with("{\"volume\":\"a.nrrd\",\"size\":[9,8,7],")) << lines[0];
  EXPECT_TRUE(lines[1].starts_with("{\"volume\":\"b\\\"\\ufffd.nrrd\",\"error\":\"'b\\\"\\ufffd.nrrd' "))
      << lines[1];
  EXPECT_TRUE(lines[2].starts_with("{\"volumes\":2,\"failed\":1,\"pictures\":1,\"seconds\":")) << lines[2];
}

TEST_F(SeveralTest, QuietTellsFailuresOnly) {
  write_volume("a.nrrd", 1);
  const Outcome outcome = run(std::string("a.nrrd none.nrrd -o {name}.png --quiet") + kHow);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "zox-mip: There is no file 'none.nrrd'.\n");
}

TEST_F(SeveralTest, NamesAreJudgedBeforeAnythingIsRendered) {
  write_volume("a.nrrd", 1);
  write_volume("b.nrrd", 2);
  std::filesystem::create_directory(path("d"));
  write_volume("d/a.nii", 3);
  expect_refusal("a.nrrd b.nrrd -o p.png", 2, "need {name} in the name of each output, which 'p.png' lacks");
  expect_refusal("a.nrrd b.nrrd -o {name}.png --raw r.npy", 2, "which 'r.npy' lacks");
  expect_refusal("a.nrrd b.nrrd -o -", 2, "which '-' lacks");
  expect_refusal("b.nrrd a.nrrd a.nrrd -o {name}.png", 2, "pictures of one name");
  expect_refusal("a.nrrd d/a.nii -o {name}.png", 2, "'a.nrrd' and 'd/a.nii' would have pictures of one name");
  expect_refusal("a.nrrd b.nrrd -o none/{name}.png", 1, "cannot be written");
  expect_refusal("a.nrrd '' -o {name}.png", 2, "is empty");
  expect_refusal("--phantom a.nrrd -o {name}.png", 2, "--phantom");
  EXPECT_EQ(count_files(), 3);
}

// Even one that cannot be read, and under any name.
TEST_F(SeveralTest, NoInputOfTheRunIsWrittenOver) {
  write_volume("a.nrrd", 1);
  write_volume("b.nrrd", 2);
  write_text(path("c.dat"), "words");
  std::filesystem::create_hard_link(path("b.nrrd"), path("a-left.png"));
  std::filesystem::create_symlink("c.dat", path("a-right.png"));
  const std::string before = read_text(path("b.nrrd"));
  expect_refusal("a.nrrd b.nrrd -o {name}-{view}.png --view left", 1, "it is the file 'b.nrrd' that is read");
  expect_refusal("a.nrrd c.dat -o {name}-{view}.png --view right", 1, "it is the file 'c.dat' that is read");
  EXPECT_EQ(read_text(path("b.nrrd")), before);
  EXPECT_EQ(read_text(path("c.dat")), "words");
  EXPECT_EQ(count_files(), 5);
}

// What {name} stands for leads nowhere else and is not read as a pattern again.
TEST_F(SeveralTest, OddNames) {
  const std::pair<const char*, const char*> names[] = {{"%s%n.nrrd", "%s%n"},
                                                       {"{name}{view}.nrrd", "{name}{view}"},
                                                       {"a\nb\x1b[2J.nrrd", "a_b_[2J"},
                                                       {"...nrrd", "__"},
                                                       {"-.nrrd", "_"},
                                                       {"x.tar.gz", "x"},
                                                       {" .nrrd", " "}};
  std::filesystem::create_directory(path("in"));
  std::filesystem::create_directory(path("out"));
  for (const auto& [name, stem] : names) write_volume(std::string("in/") + name, 1);
  const Outcome outcome = run(std::string("in/* in/.*.nrrd -o out/{name}.png") + kHow);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out.find('\x1b'), std::string::npos);
  for (const auto& [name, stem] : names)
    EXPECT_TRUE(std::filesystem::exists(path("out/") + stem + ".png")) << name;
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(path("out")), {}), std::ssize(names));
  EXPECT_EQ(count_files(), 2);
}

TEST_F(SeveralTest, NameOfThePhantomAndOfOneVolume) {
  write_volume("a.b.nrrd", 1);
  EXPECT_EQ(run(std::string("--phantom -o {name}.png --quiet --step 8") + kHow).status, 0);
  EXPECT_EQ(run(std::string("a.b.nrrd -o {name}.png --quiet") + kHow).status, 0);
  EXPECT_TRUE(std::filesystem::exists(path("phantom.png")));
  EXPECT_TRUE(std::filesystem::exists(path("a.b.png")));
}

TEST_F(SeveralTest, OneBarOverAll) {
  if (shell("script -qec true /dev/null").status != 0) GTEST_SKIP() << "no pseudo-terminal here";
  for (const char* name : {"a.nrrd", "b.nrrd", "c.nrrd"}) write_volume(name, 1);
  const Outcome outcome = shell("script -qec '" ZOX_MIP
                                " a.nrrd b.nrrd none.nrrd c.nrrd -o {name}-{view}.png --view left --view top "
                                "-j1 --size 64x64' /dev/null");
  const std::regex percent("([0-9]+) %");
  int last = 0, steps = 0;
  for (std::sregex_iterator at(outcome.out.begin(), outcome.out.end(), percent), end; at != end; ++at) {
    const int now = std::stoi((*at)[1]);
    EXPECT_GE(now, last);
    last = now;
    ++steps;
  }
  EXPECT_EQ(last, 100);
  EXPECT_GE(steps, 6);
}

TEST_F(SeveralTest, ListsPresets) {
  const Outcome outcome = run("--list-presets");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  const std::vector<std::string> lines = lines_of(outcome.out);
  const std::regex line("([a-z-]+) +(-?[0-9]+),([0-9]+) +[a-z].*");
  EXPECT_EQ(lines.size(), 12U);
  write_volume("a.nrrd", 1);
  for (const std::string& text : lines) {
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(text, parts, line)) << text;
    // The name and its numbers ask for the same.
    ASSERT_EQ(run("a.nrrd -o n.png --quiet --window " + parts[1].str() + kHow).status, 0) << text;
    ASSERT_EQ(run("a.nrrd -o c.png --quiet --window " + parts[2].str() + "," + parts[3].str() + kHow).status,
              0);
    EXPECT_EQ(read_text(path("n.png")), read_text(path("c.png"))) << text;
  }
  EXPECT_TRUE(holds(outcome.out, "brain              40,80 ")) << outcome.out;
  EXPECT_TRUE(holds(outcome.out, "lung             -600,1500 ")) << outcome.out;
}

}  // namespace
