// Whatever is wrong gets one sentence and an exit status: 1 for files, 2 for the command line.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <limits>

#include "files.h"
#include "run.h"

namespace {

class BadInputTest : public ToolTest {
 protected:
  void write_nrrd(const std::string& header_lines, size_t bytes) const {
    write_text(path("v.nrrd"),
               "NRRD0004\n" + header_lines + "encoding: raw\nendian: little\n\n" + std::string(bytes, 'a'));
  }
  void refuse_file(const std::string& words) const { expect_refusal("v.nrrd -o p.png", 1, words); }
  void refuse_words(const std::string& arguments, const std::string& words) const {
    expect_refusal(arguments, 2, words);
    EXPECT_EQ(count_files(), 0);
  }
};

TEST_F(BadInputTest, MissingFile) { expect_refusal("none.nii.gz -o p.png", 1, "no file 'none.nii.gz'"); }

TEST_F(BadInputTest, Directory) { expect_refusal(". -o p.png", 1, "is not a file"); }

TEST_F(BadInputTest, UnknownFormat) {
  write_text(path("v.nii"), "hello");
  expect_refusal("v.nii -o p.png", 1, "no format that ITK reads");
  write_text(path("v.nii"), "");
  expect_refusal("v.nii -o p.png", 1, "no format that ITK reads");
}

TEST_F(BadInputTest, DamagedPicture) {
  write_text(path("v.png"), "\x89PNG\r\n\x1a\n and then nothing that a picture would hold");
  expect_refusal("v.png -o p.png", 1, "picture of 2 dimensions");
}

TEST_F(BadInputTest, TruncatedFiles) {
  const TestVolume volume = random_volume({12, 12, 12}, 0, 255, 4);
  const std::string whole = nifti(volume);
  const std::string packed = gzipped(whole);
  write_text(path("whole.nii"), whole);
  write_text(path("packed.nii.gz"), packed);
  EXPECT_EQ(run("whole.nii -o p.png --quiet").status, 0);
  EXPECT_EQ(run("packed.nii.gz -o p.png --quiet").status, 0);
  write_text(path("v.nii"), whole.substr(0, whole.size() - 1));
  expect_refusal("v.nii -o p.png", 1, "cut short");
  write_text(path("w.nii.gz"), packed.substr(0, packed.size() / 2));
  expect_refusal("w.nii.gz -o p.png", 1, "cut short");
  write_text(path("x.nii.gz"), packed.substr(0, packed.size() - 9));
  expect_refusal("x.nii.gz -o p.png", 1, "cut short");
}

// ITK would compute on for ever, or end the process.
TEST_F(BadInputTest, DamagedOrientation) {
  const std::string whole = nifti(random_volume({4, 4, 4}, 0, 255, 4));
  for (const float wrong :
       {3e38F, -1e10F, std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()}) {
    std::string damaged = whole;
    for (size_t i = 0; i < 12; ++i) std::memcpy(damaged.data() + 280 + 4 * i, &wrong, sizeof wrong);
    write_text(path("v.nii"), damaged);
    expect_refusal("v.nii -o p.png", 1, "scanner coordinates");
    write_text(path("w.nii.gz"), gzipped(damaged));
    expect_refusal("w.nii.gz -o p.png", 1, "scanner coordinates");
  }
  std::string one = whole;
  const float wrong = std::numeric_limits<float>::quiet_NaN();
  std::memcpy(one.data() + 280 + 4 * 11, &wrong, sizeof wrong);
  for (const char* magic : {"n+1", "n+2", "n+9"}) {
    std::memcpy(one.data() + 344, magic, 4);
    write_text(path("v.nii"), one);
    expect_refusal("v.nii -o p.png", 1, "scanner coordinates");
  }
  one[0] = 1;  // the length of the header does not tell the byte order, the dimensions do
  write_text(path("v.nii"), one);
  expect_refusal("v.nii -o p.png", 1, "scanner coordinates");
}

TEST_F(BadInputTest, DamagedGzip) {
  std::string packed = gzipped(nifti(random_volume({40, 40, 40}, 0, 255, 4)));
  packed[packed.size() - 6] ^= 1;  // in the checksum
  write_text(path("v.nii.gz"), packed);
  expect_refusal("v.nii.gz -o p.png", 1, "damaged");
}

TEST_F(BadInputTest, TruncatedMetaImage) {
  const std::string header =
      "ObjectType = Image\nNDims = 3\nDimSize = 4 4 4\nElementType = MET_SHORT\nElementByteOrderMSB = True\n"
      "ElementDataFile = LOCAL\n";
  write_text(path("v.mha"), header + std::string(128, 'a'));
  EXPECT_EQ(run("v.mha -o p.png --quiet").status, 0);
  write_text(path("v.mha"), header + std::string(127, 'a'));
  expect_refusal("v.mha -o p.png", 1, "cut short");
  write_text(path("v.mha"), header);
  expect_refusal("v.mha -o p.png", 1, "cut short");
}

// A name with a % goes to printf: only a number may be asked for.
TEST_F(BadInputTest, MetaImageNames) {
  const std::string header =
      "ObjectType = Image\nNDims = 3\nDimSize = 4 4 4\nElementType = MET_UCHAR\nElementDataFile = ";
  for (int slice = 1; slice <= 4; ++slice)
    write_text(path("s0" + std::to_string(slice) + ".raw"), std::string(16, static_cast<char>('a' + slice)));
  write_text(path("v.mhd"), header + "s%02d.raw 1 4 1\n");
  EXPECT_EQ(run("v.mhd -o p.png --quiet").status, 0);
  for (const char* name : {"s%S 1 4 1", "s%n 1 4 1", "s%d%d 1 4 1", "s%12345d 1 4 1", "s% 1 4 1", "s%"}) {
    write_text(path("w.mhd"), header + name + "\n");
    expect_refusal("w.mhd -o q.png", 1, "where the voxels are");
    write_text(path("w.mhd"), "ElementDataFile2 = LOCAL\n" + header + name + "\n");
    expect_refusal("w.mhd -o q.png", 1, "where the voxels are");
  }
}

TEST_F(BadInputTest, TruncatedNrrd) {
  write_nrrd("type: short\ndimension: 3\nsizes: 4 4 4\n", 127);
  refuse_file("cut short");
  write_nrrd("type: short\ndimension: 3\nsizes: 2000 2000 2000\n", 100);
  refuse_file("cut short");
}

TEST_F(BadInputTest, WrongNumberOfDimensions) {
  write_nrrd("type: uchar\ndimension: 2\nsizes: 4 4\n", 16);
  refuse_file("2 dimensions");
  write_nrrd("type: uchar\ndimension: 3\nsizes: 4 4 1\n", 16);
  refuse_file("2 dimensions");
  write_nrrd("type: uchar\ndimension: 4\nsizes: 4 4 4 2\n", 128);
  refuse_file("4 dimensions");
}

TEST_F(BadInputTest, WrongSizes) {
  write_nrrd("type: uchar\ndimension: 3\nsizes: 2049 2 2\n", 8196);
  refuse_file("2049 voxels");
  write_nrrd("type: uchar\ndimension: 3\nsizes: 2 2049 2\n", 8196);
  refuse_file("2049 voxels");
  write_nrrd("type: uchar\ndimension: 3\nsizes: 1 4 4\n", 16);
  refuse_file("1 voxels");
  write_nrrd("type: uchar\ndimension: 3\nsizes: 2048 2 2\n", 8192);
  EXPECT_EQ(run("v.nrrd -o p.png --quiet --size 8x8").status, 0);
}

// 32 x 32 bricks of 2^17 voxels fit 32 times into 2^32: 1024 layers.
TEST_F(BadInputTest, BlockedLayoutHolds32BitsOfVoxels) {
  write_nrrd("type: uchar\ndimension: 3\nsizes: 1025 2 1025\n", size_t{1025} * 2 * 1025);
  expect_refusal("v.nrrd -o p.png --size 8x8", 1, "too large for the blocked layout");
  EXPECT_EQ(run("v.nrrd -o p.png --quiet --size 8x8 --layout stack").status, 0);
}

TEST_F(BadInputTest, StackNearestReaches1024) {
  write_nrrd("type: uchar\ndimension: 3\nsizes: 1025 2 2\n", 4100);
  expect_refusal("v.nrrd -o p.png --layout stack --interpolation nearest", 1, "up to 1024 voxels");
  write_nrrd("type: uchar\ndimension: 3\nsizes: 1024 2 2\n", 4096);
  EXPECT_EQ(run("v.nrrd -o p.png --quiet --size 8x8 --layout stack --interpolation nearest").status, 0);
}

TEST_F(BadInputTest, UnsupportedVoxels) {
  write_nrrd("type: uchar\ndimension: 4\nsizes: 3 4 4 4\nkinds: RGB-color domain domain domain\n", 192);
  refuse_file("rgb voxels");
  write_nrrd("type: block\nblocksize: 4\ndimension: 3\nsizes: 2 2 2\n", 32);
  refuse_file("cannot be read");
}

TEST_F(BadInputTest, ValuesThatDoNotFit) {
  TestVolume volume = random_volume({3, 3, 3}, 0, 100, 5);
  volume.values[13] = 32768;
  write_text(path("v.nrrd"), nrrd(volume, "ushort", raw_bytes<uint16_t>(volume)));
  refuse_file("from 0 to 32768");
  volume.values[13] = -32769;
  write_text(path("v.nrrd"), nrrd(volume, "int", raw_bytes<int32_t>(volume)));
  refuse_file("from -32769 to");
  volume.values.assign(27, std::numeric_limits<double>::quiet_NaN());
  write_text(path("v.nrrd"), nrrd(volume, "float", raw_bytes<float>(volume)));
  refuse_file("no finite value");
}

TEST_F(BadInputTest, FlatAxes) {
  TestVolume volume = random_volume({3, 3, 3}, 0, 100, 5);
  volume.axes[2] = volume.axes[0];
  write_text(path("v.nrrd"), nrrd(volume, "uchar", raw_bytes<uint8_t>(volume)));
  refuse_file("hardly span a volume");
  volume.axes[2] = {1, 0, 0.09};
  write_text(path("v.nrrd"), nrrd(volume, "uchar", raw_bytes<uint8_t>(volume)));
  refuse_file("hardly span a volume");
  volume.axes[2] = {1, 0, 0.11};
  write_text(path("v.nrrd"), nrrd(volume, "uchar", raw_bytes<uint8_t>(volume)));
  EXPECT_EQ(run("v.nrrd -o p.png --quiet --size 8x8").status, 0);
}

// ITK would show the wrong one of the two.
TEST_F(BadInputTest, NiftiBesideItsCompressedSelf) {
  const std::string whole = nifti(random_volume({5, 5, 5}, 0, 255, 6));
  write_text(path("v.nii"), whole);
  write_text(path("v.nii.gz"), gzipped(whole));
  expect_refusal("v.nii.gz -o p.png", 1, "'v.nii' lies beside 'v.nii.gz'");
  EXPECT_EQ(run("v.nii -o p.png --quiet").status, 0);
  unlink(path("v.nii").c_str());
  EXPECT_EQ(run("v.nii.gz -o p.png --quiet").status, 0);
}

TEST_F(BadInputTest, BadCommandLines) {
  refuse_words("", "output");
  refuse_words("-o p.png", "--phantom");
  refuse_words("--phantom head.nii -o p.png", "--phantom");
  refuse_words("--phantom", "output");
  refuse_words("--phantom -o ''", "-o");
  refuse_words("a.nii b.nii -o p.png", "b.nii");
  refuse_words("--phantom -o p.png --colour red", "--colour");
  for (const char* view : {"front", "10", "10,", "10,20,30", "10,91", "400,0", "nan,0", "'10, 20'"})
    refuse_words("--phantom -o p.png --view " + std::string(view), "--view");
  for (const char* size : {"0x5", "5", "5x", "-5x5", "8193x5", "99999999999x5", "5x5x5", "5.5x5"})
    refuse_words("--phantom -o p.png --size " + std::string(size), "--size");
  for (const char* step : {"0", "-1", "0.04", "65", "x", "nan", "inf", "1e999"})
    refuse_words("--phantom -o p.png --step " + std::string(step), "--step");
  for (const char* window : {"5", "5,0", "5,-2", "5,x", "inf,3"})
    refuse_words("--phantom -o p.png --window " + std::string(window), "--window");
  for (const char* range : {"5", "5,4", "nan,4", "1,2,3"})
    refuse_words("--phantom -o p.png --depth-range " + std::string(range), "--depth-range");
  for (const char* threads : {"0", "-3", "257", "two", "1.5"})
    refuse_words("--phantom -o p.png -j " + std::string(threads), "-j");
  refuse_words("--phantom -o p.png --projection fish", "--projection");
  refuse_words("--phantom -o p.png --interpolation cubic", "--interpolation");
  refuse_words("--phantom -o p.png --layout heap", "--layout");
}

TEST_F(BadInputTest, WindowsThatDoNotFit) {
  for (const char* window : {"0,1", "0,32768", "32767,4", "-32768,4", "1e9,5"})
    expect_refusal("--phantom -o p.png --quiet --window " + std::string(window), 1, "--window");
}

TEST_F(BadInputTest, TooManySamples) {
  TestVolume volume = random_volume({3, 3, 2000}, 0, 100, 5);
  volume.axes[2] = {0, 0, 100};
  write_text(path("v.nrrd"), nrrd(volume, "uchar", raw_bytes<uint8_t>(volume)));
  expect_refusal("v.nrrd -o p.png --quiet --step 0.05", 1, "--step");
}

}  // namespace
