// What is wrong with a file is said in a sentence, whatever is wrong.
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <limits>

#include "scratch.h"

namespace zox::input {
namespace {

using Case = std::pair<std::string, const char*>;

class RefuseTest : public ScratchTest {
 protected:
  void expect_refusal(const std::string& file, const std::string& words, ReadOptions options = {}) const {
    SCOPED_TRACE(file);
    try {
      read_scan(file, options);
      ADD_FAILURE() << "was read, where '" << words << "' ought to have been said";
    } catch (const Failure& failure) {
      const std::string sentence = failure.what();
      EXPECT_NE(sentence.find(words), std::string::npos) << sentence;
      EXPECT_TRUE(sentence.ends_with(".")) << sentence;
      EXPECT_NE(sentence.find("'"), std::string::npos) << "names no file: " << sentence;
    }
  }
  static TestVolume some() { return random_volume({5, 4, 3}, 0, 100, 11); }
  static std::string bytes() { return raw_bytes<uint8_t>(some()); }
};

TEST_F(RefuseTest, WhatIsNoFile) {
  expect_refusal(path("none.nii"), "There is no file");
  expect_refusal(path("none/v.nii"), "There is no file");
  ASSERT_EQ(mkfifo(path("pipe.nii").c_str(), 0666), 0);
  expect_refusal(path("pipe.nii"), "is not a file");
  expect_refusal(write("v.nii", ""), "NIfTI");
  expect_refusal(write("v.dat", ""), "is empty");
  expect_refusal(write("v.dat", "words"), "in no format that can be read");
}

// The superuser may read everything.
TEST_F(RefuseTest, WhatMayNotBeRead) {
  const std::string file = write("v.nii", nifti(some()));
  mkdir(path("closed").c_str(), 0777);
  write("closed/v.nii", nifti(some()));
  chmod(file.c_str(), 0);
  chmod(path("closed").c_str(), 0);
  chmod(path("").c_str(), 0755);
  const bool root = geteuid() == 0;
  ASSERT_EQ(root ? setresuid(65534, 65534, 0) : 0, 0);
  expect_refusal(file, "permission is denied");
  expect_refusal(path("closed/v.nii"), "permission to search the folder");
  ASSERT_EQ(root ? setresuid(0, 0, 0) : 0, 0);
  chmod(path("closed").c_str(), 0777);
}

TEST_F(RefuseTest, VoxelFilesOfHeaders) {
  const std::string nrrd_head =
      "NRRD0004\ntype: uchar\ndimension: 3\nsizes: 5 4 3\nencoding: raw\ndata file: ";
  const std::string meta_head = meta_image(some(), "MET_UCHAR", "ElementDataFile = ");
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0666), 0);
  write("short", bytes().substr(1));
  const Case cases[] = {{"none.raw", "/none.raw', which does not exist"},
                        {"pipe", "which is not a file"},
                        {".", "which is a folder"},
                        {"short", "cut short"},
                        {std::string("short\0er", 8), "/short?er', which does not exist"},
                        {"not\x1b\there", "/not??here', which does not exist"}};
  for (const auto& [name, words] : cases) {
    expect_refusal(write("v.nhdr", nrrd_head + name + "\n"), words);
    expect_refusal(write("v.mhd", meta_head + name + "\n"), words);
  }
  std::string pair = nifti(some()).substr(0, 348);
  pair[345] = 'i';
  expect_refusal(write("p.hdr", pair), "p.img', which does not exist");
  expect_refusal(write("q.img", bytes()), "There is no file");
}

TEST_F(RefuseTest, CutFiles) {
  const std::string whole = nifti(some());
  const std::string packed = gzipped(whole);
  const std::string nrrd_text = "NRRD0004\ntype: uchar\ndimension: 3\nsizes: 2 2 2\nencoding: ascii\n\n";
  const std::string meta_text = "NDims = 3\nDimSize = 2 2 2\nElementType = MET_UCHAR\nBinaryData = False\n";
  const std::string vtk =
      "\nDATASET STRUCTURED_POINTS\nDIMENSIONS 2 2 2\nSPACING 1 1 1\nORIGIN 0 0 0\n"
      "POINT_DATA 8\nSCALARS s unsigned_char\nLOOKUP_TABLE default\n";
  const std::pair<const char*, std::string> files[] = {
      {"v.nii", whole.substr(0, whole.size() - 1)},
      {"v.nii.gz", packed.substr(0, packed.size() / 2)},
      {"w.nii.gz", packed.substr(0, packed.size() - 9)},
      {"x.nii.gz", gzipped(whole.substr(0, whole.size() - 1))},
      {"v.nrrd", nrrd(some(), "uchar", bytes().substr(1))},
      {"t.nrrd", nrrd_text + "1 2 3 4 5 6 7"},
      {"u.nrrd", nrrd_text + "1 2 3 4 5 6 7 x"},
      {"w.nrrd", nrrd_text + "1 2 3 4 5 6 7 256"},
      {"v.mha", meta_image(some(), "MET_UCHAR", "ElementDataFile = LOCAL\n" + bytes().substr(1))},
      {"w.mha", meta_image(some(), "MET_UCHAR",
                           "CompressedData = True\nElementDataFile = LOCAL\n" + deflated(bytes().substr(1)))},
      {"t.mha", meta_text + "ElementDataFile = LOCAL\n1 2 3 4 5 6 7\n"},
      {"t.vtk", "# vtk DataFile Version 3.0\nw\nASCII" + vtk + "1 2 3 4 5 6 7\n"},
      {"b.vtk", "# vtk DataFile Version 3.0\nw\nBINARY" + vtk + "1234567"}};
  for (const auto& [name, content] : files) expect_refusal(write(name, content), "cut short");
}

// The checksum is the only thing that tells.
TEST_F(RefuseTest, DamagedGzip) {
  std::string packed = gzipped(nifti(random_volume({40, 40, 40}, 0, 255, 4)));
  packed[packed.size() - 6] ^= 1;
  expect_refusal(write("v.nii.gz", packed), "damaged");
}

TEST_F(RefuseTest, WildNifti) {
  const std::string whole = nifti(some());
  struct Change {
    size_t at;
    float number;
    const char* words;
  };
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const Change changes[] = {{280, 3e38F, "scanner coordinates"},
                            {324, nan, "scanner coordinates"},
                            {292, std::numeric_limits<float>::infinity(), "scanner coordinates"},
                            {108, 1e9F, "cut short"},
                            {108, 3e38F, "where the voxels are"},
                            {108, nan, "where the voxels are"},
                            {108, -1, "where the voxels are"},
                            {320, 0, "hardly span"}};
  for (const Change& change : changes) {
    std::string bytes = whole;
    std::memcpy(bytes.data() + change.at, &change.number, 4);
    expect_refusal(write("v.nii", bytes), change.words);
    expect_refusal(write("v.nii.gz", gzipped(bytes)), change.words);
  }
  const std::pair<int, const char*> types[] = {
      {128, "rgb voxels"}, {32, "complex voxels"}, {77, "unsupported"}};
  for (const auto& [type, words] : types) {
    std::string bytes = whole;
    const int16_t number = static_cast<int16_t>(type);
    std::memcpy(bytes.data() + 70, &number, 2);
    expect_refusal(write("v.nii", bytes), words);
  }
}

TEST_F(RefuseTest, WrongNrrd) {
  const std::string head = "NRRD0004\nencoding: raw\nendian: little\n";
  const std::string three = "type: uchar\ndimension: 3\nsizes: 2 2 2\n";
  const Case cases[] = {
      {head + "type: uchar\ndimension: 2\nsizes: 4 4\n\n", "2 dimensions"},
      {head + "type: uchar\ndimension: 3\nsizes: 4 4 1\n\n", "2 dimensions"},
      {head + "type: uchar\ndimension: 3\nsizes: 1 4 4\n\n", "1 voxels"},
      {head + "type: uchar\ndimension: 4\nsizes: 2 2 2 2\n\n", "holds 2 volumes"},
      {head + "type: uchar\ndimension: 3\nsizes: 2 2 -2\n\n", "'sizes' must be"},
      {head + "type: uchar\ndimension: 3\nsizes: 2 2\n\n", "'sizes' must be"},
      {head + "type: uchar\ndimension: 3\nsizes: 2000 2000 2000\n\n", "cut short"},
      {head + "type: block\ndimension: 3\nsizes: 2 2 2\n\n", "'type' must be"},
      {head + "type: uchar\ndimension: 4\nsizes: 3 2 2 2\nkinds: RGB-color domain domain domain\n\n",
       "rgb voxels"},
      {head + three + "spacings: 1 1 1,5\n\n", "'spacings' must be numbers"},
      {head + three + "space: RAS\nspace directions: (1,1,0) (1,1,0) (0,0,1)\n\n", "hardly span"},
      {"NRRD0004\nencoding: bzip2\n" + three + "\n", "'encoding' must be"},
      {"NRRD0004\nencoding: raw\ntype: short\ndimension: 3\nsizes: 2 2 2\n\n", "in which order the bytes"},
      {"words", "is no NRRD file"}};
  for (const auto& [text, words] : cases) {
    SCOPED_TRACE(text);
    expect_refusal(write("v.nrrd", text + bytes()), words);
  }
}

TEST_F(RefuseTest, WrongMetaImage) {
  const std::string local = "ObjectType = Image\nElementDataFile = LOCAL\n";
  const std::string three = "NDims = 3\nDimSize = 2 2 2\n";
  const std::string bytes_type = "ElementType = MET_UCHAR\n";
  const Case cases[] = {{"NDims = -3\nDimSize = 2 2 2\n" + bytes_type + local, "'NDims'"},
                        {three + bytes_type + "ElementSpacing = 1 1,5 1\n" + local,
                         "'ElementSpacing' must be 3 numbers, not '1 1,5 1'"},
                        {three + "ElementType = MET_UCHAR_ARRAY\n" + local, "'ElementType'"},
                        {three + bytes_type + "ElementNumberOfChannels = 3\n" + local, "vector voxels"},
                        {three + bytes_type, "where the voxels are"}};
  for (const auto& [text, words] : cases) {
    SCOPED_TRACE(text);
    expect_refusal(write("v.mha", text + bytes()), words);
  }
  // A name with a % stands for numbers, and for nothing that could ask for more.
  for (const char* pattern : {"s%S 1 4 1", "s%n 1 4 1", "s%d%d 1 4 1", "s%12345d 1 4 1", "s% 1 4 1", "s%"})
    expect_refusal(write("v.mhd", three + bytes_type + "ElementDataFile = " + pattern + "\n"),
                   "where the voxels are");
}

// A header may ask for any amount; how much there is stands beside it.
TEST_F(RefuseTest, MoreThanMemoryHolds) {
  ReadOptions options;
  options.memory_limit = 100000;
  const std::string file = write("v.nii.gz", gzipped(nifti(random_volume({64, 64, 64}, 0, 9, 3))));
  expect_refusal(file, "of which 100000 are available", options);
  std::string huge = nifti(some());
  const int16_t sizes[] = {3, 32767, 32767, 32767};
  std::memcpy(huge.data() + 40, sizes, sizeof sizes);
  expect_refusal(write("w.nii.gz", gzipped(huge)), "cut short");
  expect_refusal(write("w.nii", huge), "cut short");
}

// Twenty million numbers as text take longer than a hundredth of a second.
TEST_F(RefuseTest, WhatTakesTooLong) {
  std::string text = "NRRD0004\ntype: uchar\ndimension: 3\nsizes: 400 500 100\nencoding: ascii\n\n";
  for (int i = 0; i < 20000000; ++i) text += "1 ";
  ReadOptions options;
  options.seconds = 0.01;
  expect_refusal(write("v.nrrd", text), "after 0.01 seconds", options);
}

}  // namespace
}  // namespace zox::input
