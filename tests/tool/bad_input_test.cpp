// Whatever is wrong gets one sentence and an exit status: 1 for files, 2 for the command line. Nothing is
// written then, nothing left.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <limits>

#include "files.h"
#include "run.h"

namespace {

class BadInputTest : public ToolTest {
 protected:
  // With the files that are there before.
  void refuse(const std::string& arguments, int status, const std::string& words) const {
    const int files = count_files();
    expect_refusal(arguments, status, words);
    EXPECT_EQ(count_files(), files) << arguments;
  }
  void write_nrrd(const std::string& header_lines, size_t bytes) const {
    write_text(path("v.nrrd"),
               "NRRD0004\n" + header_lines + "encoding: raw\nendian: little\n\n" + std::string(bytes, 'a'));
  }
};

// What the reader says of files is tested where it stands; here, that the tool says it.
TEST_F(BadInputTest, FilesThatCannotBeShown) {
  const TestVolume volume = random_volume({12, 12, 12}, 0, 255, 4);
  const std::string whole = nifti(volume);
  std::string series = whole;
  series[40] = 4;
  series[48] = 1;
  TestVolume nothing = volume;
  nothing.values.assign(nothing.values.size(), std::numeric_limits<double>::quiet_NaN());
  const std::string meta = "NDims = 3\nDimSize = 4 4 4\nElementType = MET_UCHAR\n";
  struct Case {
    const char* name;
    std::string content;
    const char* words;
  };
  const Case cases[] = {
      {"empty.nii", "", "is no NIfTI file"},
      {"words.nii", "hello", "is no NIfTI file"},
      {"words.dat", "hello", "in no format that can be read"},
      {"picture.png", "\x89PNG\r\n\x1a\n and then nothing", "in no format that can be read"},
      {"cut.nii", whole.substr(0, whole.size() - 1), "cut short"},
      {"cut.nii.gz", gzipped(whole).substr(0, 900), "cut short"},
      {"none.mhd", meta + "ElementDataFile = none.raw\n", "'none.raw', which does not exist"},
      {"dims.mhd", "NDims = -3\nElementDataFile = none.raw\n", "'NDims'"},
      {"comma.mhd", meta + "ElementSpacing = 1,5 1 1\nElementDataFile = none.raw\n", "'ElementSpacing'"},
      {"nan.nrrd", nrrd(nothing, "float", raw_bytes<float>(nothing)), "finite"},
      {"long.nrrd",
       "NRRD0004\ntype: uchar\ndimension: 3\nsizes: 2049 2 2\nencoding: raw\n\n" + std::string(8196, 'a'),
       "holds no sample"}};
  for (const Case& one : cases) {
    write_text(path(one.name), one.content);
    refuse(std::string(one.name) + " -o p.png", 1, one.words);
    refuse(std::string(one.name) + " -o -", 1, one.words);
  }
  refuse("missing.nii.gz -o p.png", 1, "no file 'missing.nii.gz'");
  mkdir(path("folder").c_str(), 0777);
  refuse("folder -o p.png", 1, "folder");
}

TEST_F(BadInputTest, PipesDoNotHang) {
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0666), 0);
  refuse("pipe -o p.png", 1, "is not a file");
  write_text(path("v.mhd"), "NDims = 3\nDimSize = 4 4 4\nElementType = MET_UCHAR\nElementDataFile = pipe\n");
  refuse("v.mhd -o p.png", 1, "'pipe', which is not a file");
  write_text(path("v.nhdr"),
             "NRRD0004\ntype: uchar\ndimension: 3\nsizes: 4 4 4\nencoding: raw\ndata file: pipe\n");
  refuse("v.nhdr -o p.png", 1, "'pipe', which is not a file");
}

TEST_F(BadInputTest, OneOfSeveralVolumes) {
  write_nrrd("type: uchar\ndimension: 4\nsizes: 4 4 4 3\n", 192);
  refuse("v.nrrd -o p.png", 1, "holds 3 volumes");
  refuse("v.nrrd -o p.png --volume 3", 1, "has no volume 3");
  EXPECT_EQ(run("v.nrrd -o p.png --quiet --volume 2").status, 0);
}

TEST_F(BadInputTest, LargestSizes) {
  write_nrrd("type: uchar\ndimension: 3\nsizes: 2048 2 2\n", 8192);
  for (const char* how : {"blocked", "stack", "auto", "stack --interpolation nearest"})
    EXPECT_EQ(run("v.nrrd -o p.png --quiet --size 8x8 --view left --layout " + std::string(how)).status, 0)
        << how;
}

// However few descriptors there are: one sentence, and no other library's words.
TEST_F(BadInputTest, FewDescriptors) {
  write_text(path("v.nii"), nifti(random_volume({12, 12, 12}, 0, 255, 4)));
  for (int limit = 4; limit < 12; ++limit) {
    const Outcome outcome =
        shell("prlimit --nofile=" + std::to_string(limit) + " " ZOX_MIP " v.nii -o p.png --quiet");
    if (outcome.status == 0) break;
    EXPECT_LE(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    EXPECT_EQ(count_files(), 1);
  }
}

// Every option, with what it does not take.
TEST_F(BadInputTest, CommandLines) {
  struct Case {
    const char* option;
    std::vector<const char*> words;
  };
  const Case cases[] = {
      {"--view", {"frontal", "10", "10,", "10,20,30", "10,91", "400,0", "nan,0", "'10, 20'", "''"}},
      {"--size", {"0x5", "5", "5x", "-5x5", "8193x5", "99999999999x5", "5x5x5", "5.5x5", "nanx5"}},
      {"--step", {"0", "-1", "0.04", "65", "x", "nan", "inf", "1e999"}},
      {"--window", {"5", "5,0", "5,-2", "5,x", "inf,3", "files"}},
      {"--depth-range", {"5", "5,4", "nan,4", "1,2,3"}},
      {"--slab", {"-1", "x", "nan", "1,2"}},
      {"--center", {"1,2", "1,2,3,4", "a,b,c", "inf,0,0"}},
      {"--zoom", {"0", "-1", "x", "1001"}},
      {"--reduction", {"sum", "MAX"}},
      {"-j", {"0", "-3", "257", "two", "1.5"}},
      {"--projection", {"fish"}},
      {"--interpolation", {"cubic"}},
      {"--layout", {"heap"}},
      {"--precision", {"double"}},
      {"--colormap", {"mauve"}},
      {"--png-level", {"13", "-1", "x"}},
      {"--frames", {"1", "0", "3601", "x"}},
      {"--spin", {"w"}},
      {"--volume", {"-1", "x", "1.5"}},
      {"--read-seconds", {"0", "-1", "x"}}};
  for (const Case& one : cases)
    for (const char* word : one.words)
      refuse("--phantom -o p.png " + std::string(one.option) + " " + word, 2, one.option);
}

TEST_F(BadInputTest, CommandLinesThatMakeNoSense) {
  const std::pair<const char*, const char*> cases[] = {
      {"", "--phantom"},
      {"-o p.png", "--phantom"},
      {"--phantom head.nii -o p.png", "--phantom"},
      {"--phantom", "output"},
      {"--phantom -o ''", "-o"},
      {"a.nii b.nii -o p.png", "b.nii"},
      {"--phantom -o p.png --colour red", "--colour"},
      {"--phantom -o p.png --slab 5 --depth-range 1,2", "--slab"},
      {"--phantom -o p.png --view left --view right", "{view}"},
      {"--phantom -o p-{view}.png --view left --view LEFT", "Two pictures"},
      {"--phantom -o p-{view}.png --raw r.npy --view left --view right", "r.npy"},
      {"--phantom -o p-{frame}.png", "--frames"},
      {"--phantom -o p.png --frames 5 --raw r.npy", "{frame}"},
      {"--phantom -o p.png --raw p.png", "Two outputs"},
      {"--phantom -o p.png --depth d.npy --reduction mean", "--depth"}};
  for (const auto& [arguments, words] : cases) refuse(arguments, 2, words);
}

// Names whose suffix is not what would be written, and places where nothing can be.
TEST_F(BadInputTest, Outputs) {
  for (const char* name : {"x.jpg", "x.nii.gz", "x", "x.png.gz", ".png", "x.npy", "x.nrrd"})
    refuse("--phantom --size 8x8 -o " + std::string(name), 1, "must end in .png");
  for (const char* option : {"--raw", "--depth"})
    for (const char* name : {"x.jpg", "x", "x.nii"})
      refuse("--phantom --size 8x8 -o p.png " + std::string(option) + " " + name, 1,
             "must end in .png or .nrrd or .npy");
  mkdir(path("d.png").c_str(), 0777);
  refuse("--phantom --size 8x8 -o d.png", 1, "folder of that name");
  refuse("--phantom --size 8x8 -o none/p.png", 1, "cannot be written");
  refuse("--phantom --size 8x8 -o p.png --raw none/r.npy", 1, "cannot be written");
  // A pipe of the test's own stands for devices: were it replaced, no harm would be done.
  ASSERT_EQ(mkfifo(path("pipe.png").c_str(), 0666), 0);
  refuse("--phantom --size 8x8 -o pipe.png", 1, "something else");
  EXPECT_TRUE(std::filesystem::is_fifo(path("pipe.png")));
}

// By any name: its own, a link's, the voxel file's of a header.
TEST_F(BadInputTest, OutputsThatAreRead) {
  const TestVolume volume = random_volume({12, 12, 12}, 0, 255, 4);
  const std::string raw = raw_bytes<uint8_t>(volume);
  const std::string head = "NRRD0004\ntype: uchar\ndimension: 3\nsizes: 12 12 12\nencoding: raw\n";
  write_text(path("v.nrrd"), head + "\n" + raw);
  write_text(path("v.nhdr"), head + "data file: det.png\n");
  write_text(path("det.png"), raw);
  ASSERT_EQ(symlink("det.png", path("soft.png").c_str()), 0);
  ASSERT_EQ(link(path("det.png").c_str(), path("hard.png").c_str()), 0);
  write_text(path("nrrd.png"), head + "\n" + raw);
  for (const char* name : {"det.png", "soft.png", "hard.png", "./det.png"})
    refuse("v.nhdr --size 8x8 -o " + std::string(name), 1, "that is read");
  refuse("nrrd.png --size 8x8 -o nrrd.png", 1, "that is read");
  refuse("v.nrrd --size 8x8 -o p.png --raw v.nrrd", 1, "that is read");
  EXPECT_EQ(read_text(path("det.png")), raw);
  EXPECT_EQ(read_text(path("v.nrrd")), head + "\n" + raw);
}

// A place where nothing can be written is told before the work: this scan would not even be read.
TEST_F(BadInputTest, OutputsAreJudgedFirst) {
  write_nrrd("type: uchar\ndimension: 3\nsizes: 4 4 4\n", 1);
  refuse("v.nrrd -o none/p.png", 1, "none/p.png");
  refuse("v.nrrd -o p.jpg", 1, "p.jpg");
}

TEST_F(BadInputTest, DepthsWithoutSamples) {
  refuse("--phantom -o p.png --depth-range 500,600", 1, "no sample of the volume at the depths");
  refuse("--phantom -o p.png --center 1000,0,0 --zoom 10", 1, "no sample of the volume");
}

TEST_F(BadInputTest, SayInTime) {
  write_text(path("v.nrrd"), "NRRD0004\ntype: uchar\ndimension: 3\nsizes: 400 500 20\nencoding: ascii\n\n" +
                                 std::string(8000000, ' '));
  refuse("v.nrrd -o p.png --read-seconds 0.001", 1, "after 0.001 seconds");
}

// A program that was copied without what it loads still reads what it can by itself.
TEST_F(BadInputTest, SaysThatReadersAreMissing) {
  write_text(path("v.vtk"), "# vtk DataFile Version 3.0\n");
  const Outcome outcome = shell("cp " ZOX_MIP " zox-mip && ./zox-mip v.vtk -o p.png --quiet");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(outcome.err.starts_with(
      "zox-mip: 'v.vtk' cannot be read: the readers of its format could not be loaded ("))
      << outcome.err;
  EXPECT_TRUE(outcome.err.ends_with(").\n")) << outcome.err;
  EXPECT_EQ(shell("./zox-mip --phantom -o p.png --size 16x16 --quiet").status, 0);
  const TestVolume volume = random_volume({9, 8, 7}, 0, 200, 1);
  for (const char* name : {"a.nrrd", "b.nrrd"})
    write_text(path(name), nrrd(volume, "uchar", raw_bytes<uint8_t>(volume)));
  EXPECT_EQ(shell("./zox-mip a.nrrd b.nrrd -o {name}.png --size 16x16 --quiet").status, 0)
      << "files that need none";
}

}  // namespace
