// The voxels and the geometry of good files, in every form that they come in.
#include <algorithm>
#include <cstring>

#include "scratch.h"

namespace zox::input {
namespace {

using Form = std::pair<const char*, std::string>;

class ReadTest : public ScratchTest {
 protected:
  static Scan read(const std::string& file, int volume = -1) {
    ReadOptions options;
    options.volume = volume;
    return read_scan(file, options);
  }
  static TestVolume some() { return random_volume({5, 4, 3}, 0, 100, 11); }
};

void expect_axes(const Scan& scan, const std::array<Point, 3>& axes, const Point& origin) {
  for (size_t axis = 0; axis < 3; ++axis) {
    EXPECT_NEAR(scan.array.origin[axis], origin[axis], 1e-5) << axis;
    for (size_t row = 0; row < 3; ++row)
      EXPECT_NEAR(scan.array.axes[axis][row], axes[axis][row], 1e-6) << axis << ", " << row;
  }
}

std::string swapped_shorts(const TestVolume& volume) {
  std::string bytes = raw_bytes<int16_t>(volume);
  for (size_t i = 0; i < bytes.size(); i += 2) std::swap(bytes[i], bytes[i + 1]);
  return bytes;
}

std::string text_of(const TestVolume& volume) {
  std::string text;
  for (const double value : volume.values) text += std::to_string(static_cast<int>(value)) + "\n";
  return text;
}

std::string hex_of(const std::string& bytes) {
  std::string hex;
  for (const char byte : bytes) {
    char text[4];
    std::snprintf(text, sizeof text, "%02X ", static_cast<unsigned char>(byte));
    hex += text;
  }
  return hex;
}

TEST_F(ReadTest, NrrdOfEveryType) {
  const TestVolume volume = some();
  struct Case {
    const char* type;
    std::string bytes;
    int wanted;
  };
  const Case cases[] = {{"uchar", raw_bytes<uint8_t>(volume), ZOX_RENDER_UINT8},
                        {"int8", raw_bytes<int8_t>(volume), ZOX_RENDER_INT8},
                        {"unsigned short", raw_bytes<uint16_t>(volume), ZOX_RENDER_UINT16},
                        {"short", raw_bytes<int16_t>(volume), ZOX_RENDER_INT16},
                        {"uint32_t", raw_bytes<uint32_t>(volume), ZOX_RENDER_UINT32},
                        {"int", raw_bytes<int32_t>(volume), ZOX_RENDER_INT32},
                        {"float", raw_bytes<float>(volume), ZOX_RENDER_FLOAT32},
                        {"double", raw_bytes<double>(volume), ZOX_RENDER_FLOAT64},
                        {"longlong", raw_bytes<int64_t>(volume), ZOX_RENDER_INT32},
                        {"uint64", raw_bytes<uint64_t>(volume), ZOX_RENDER_INT32}};
  for (const Case& one : cases) {
    SCOPED_TRACE(one.type);
    const Scan scan = read(write("v.nrrd", nrrd(volume, one.type, one.bytes)));
    EXPECT_EQ(scan.array.type, one.wanted);
    expect_values(scan, volume);
  }
}

TEST_F(ReadTest, LongIntegersThatFitNo32Bits) {
  TestVolume volume = some();
  volume.values[7] = 4e9;
  const Scan positive = read(write("v.nrrd", nrrd(volume, "int64", raw_bytes<int64_t>(volume))));
  EXPECT_EQ(positive.array.type, ZOX_RENDER_UINT32);
  expect_values(positive, volume);
  volume.values[8] = -4e12;
  const Scan scan = read(write("v.nrrd", nrrd(volume, "int64", raw_bytes<int64_t>(volume))));
  EXPECT_EQ(scan.array.type, ZOX_RENDER_FLOAT64);
  expect_values(scan, volume);
}

// The same voxels in every way that a header can speak of them.
TEST_F(ReadTest, NrrdOfEveryEncoding) {
  const TestVolume volume = some();
  const std::string raw = raw_bytes<int16_t>(volume);
  write("raw", raw);
  write("tail", "some words" + raw);
  write("lines", "one\ntwo\n" + raw);
  write("packed", gzipped(raw));
  for (size_t z = 0; z < 3; ++z) write("s" + std::to_string(z), raw.substr(z * 40, 40));
  const std::string common = "NRRD0005\n# words\ntype: short\ndimension: 3\nsizes: 5 4 3\nkey:=value\n";
  const std::string little = "encoding: raw\nendian: little\n";
  const Form forms[] = {
      {"raw", little + "\n" + raw},
      {"carriage returns", "encoding: raw\r\nendian: little\r\n\r\n" + raw},
      {"big", "encoding: raw\nendian: big\n\n" + swapped_shorts(volume)},
      {"gzip", "encoding: gzip\nendian: little\n\n" + gzipped(raw)},
      {"gzip, big", "encoding: gz\nendian: big\n\n" + gzipped(swapped_shorts(volume))},
      {"gzip with a skip", "encoding: gzip\nendian: little\nbyte skip: 3\n\n" + gzipped("abc" + raw)},
      {"text", "encoding: ascii\n\n" + text_of(volume)},
      {"hex", "encoding: hex\nendian: little\n\n" + hex_of(raw)},
      {"file", little + "data file: raw\n"},
      {"file's end", little + "byteskip: -1\ndata file: tail\n"},
      {"lines", little + "line skip: 2\ndata file: lines\n"},
      {"packed file", "encoding: gzip\nendian: little\ndatafile: packed\n"},
      {"list", little + "data file: LIST\ns0\ns1\ns2\n"},
      {"numbers", little + "data file: s%d 0 2 1\n"}};
  for (const auto& [name, rest] : forms) {
    SCOPED_TRACE(name);
    expect_values(read(write("v.nhdr", common + rest)), volume);
  }
}

TEST_F(ReadTest, MetaImageOfEveryForm) {
  const TestVolume volume = some();
  const std::string raw = raw_bytes<int16_t>(volume);
  write("v.raw", raw);
  write("tail", "some words" + raw);
  write("z", deflated(raw));
  for (size_t z = 0; z < 3; ++z) write("s00" + std::to_string(z + 1), raw.substr(z * 40, 40));
  const Form forms[] = {
      {"local", "ElementDataFile = LOCAL\n" + raw},
      {"big", "ElementByteOrderMSB = True\nElementDataFile = LOCAL\n" + swapped_shorts(volume)},
      {"packed", "CompressedData = True\nElementDataFile = LOCAL\n" + deflated(raw)},
      {"text", "BinaryData = False\nElementDataFile = LOCAL\n" + text_of(volume)},
      {"file", "ElementDataFile = v.raw\n"},
      {"packed file", "CompressedData = True\nElementDataFile = z\n"},
      {"file's end", "HeaderSize = -1\nElementDataFile = tail\n"},
      {"header", "HeaderSize = 10\nElementDataFile = tail\n"},
      {"list", "ElementDataFile = LIST\ns001\ns002\ns003\n"},
      {"numbers", "ElementDataFile = s%03d 1 3 1\n"},
      {"numbers of slices", "ElementDataFile = s%03d\n"}};
  for (const auto& [name, rest] : forms) {
    SCOPED_TRACE(name);
    expect_values(read(write("v.mhd", meta_image(volume, "MET_SHORT", rest))), volume);
  }
}

TEST_F(ReadTest, NiftiOfEveryForm) {
  const TestVolume volume = some();
  const std::string bytes = nifti(volume);
  std::string pair = bytes.substr(0, 348);
  pair[345] = 'i';
  std::memset(pair.data() + 108, 0, 4);
  write("p.hdr", pair);
  write("p.img", raw_bytes<uint8_t>(volume));
  write("q.hdr.gz", gzipped(pair));
  write("q.img.gz", gzipped(raw_bytes<uint8_t>(volume)));
  write("v.nii", bytes);
  // A packed file is read though a plain one lies beside it, with capitals too.
  const std::string other = nifti(random_volume({5, 4, 3}, 0, 100, 12));
  write("w.nii.gz", gzipped(bytes));
  write("w.nii", other);
  write("X.NII.GZ", gzipped(bytes));
  write("X.NII", other);
  for (const char* name : {"v.nii", "w.nii.gz", "X.NII.GZ", "p.hdr", "p.img", "q.hdr.gz", "q.img.gz"}) {
    SCOPED_TRACE(name);
    expect_values(read(path(name)), volume);
  }
}

TEST_F(ReadTest, NiftiValuesAreScaled) {
  const TestVolume volume = some();
  std::string bytes = nifti(volume);
  const auto put = [&](size_t at, float value) { std::memcpy(bytes.data() + at, &value, 4); };
  put(112, 2.5F);
  put(116, -7.0F);
  const Scan scan = read(write("v.nii", bytes));
  EXPECT_EQ(scan.array.type, ZOX_RENDER_UINT8);
  EXPECT_EQ(value_of(scan, 2, 2, 1), 2.5 * volume.at(2, 2, 1) - 7);
  put(112, 0);  // no scaling
  EXPECT_EQ(value_of(read(write("v.nii", bytes)), 2, 2, 1), volume.at(2, 2, 1));
}

// Two volumes one after the other, and voxel by voxel.
TEST_F(ReadTest, OneOfSeveralVolumes) {
  const TestVolume both = random_volume({5, 4, 6}, 0, 100, 13);
  TestVolume wanted = both;
  wanted.size = {5, 4, 3};
  wanted.values.erase(wanted.values.begin(), wanted.values.begin() + 60);
  std::string bytes = nifti(both);
  const int16_t sizes[] = {4, 5, 4, 3, 2};
  std::memcpy(bytes.data() + 40, sizes, sizeof sizes);
  const std::string raw = raw_bytes<uint8_t>(both);
  std::string mixed;
  for (size_t i = 0; i < 60; ++i) mixed += {raw[i], raw[60 + i]};
  const std::string head = "NRRD0004\ntype: uchar\ndimension: 4\nencoding: raw\n";
  const std::string meta = "NDims = 4\nDimSize = 5 4 3 2\nElementType = MET_UCHAR\nElementDataFile = LOCAL\n";
  const Form files[] = {{"v.nii", bytes},
                        {"v.nii.gz", gzipped(bytes)},
                        {"v.nrrd", head + "sizes: 5 4 3 2\n\n" + raw},
                        {"w.nrrd", head + "sizes: 2 5 4 3\nkinds: list domain domain domain\n\n" + mixed},
                        {"v.mha", meta + raw}};
  for (const auto& [name, content] : files) {
    SCOPED_TRACE(name);
    write(name, content);
    expect_values(read(path(name), 1), wanted);
    EXPECT_THROW(read(path(name)), Failure);
    EXPECT_THROW(read(path(name), 2), Failure);
  }
}

TEST_F(ReadTest, PlainFilesAreMapped) {
  const std::string bytes = nifti(some());
  const Scan scan = read(write("v.nii", bytes));
  EXPECT_EQ(scan.memory.get_deleter().bytes, bytes.size());
}

// Axes and origin in millimetres to the left, to the back and up, whatever frame the file counts in.
TEST_F(ReadTest, GeometryOfNrrd) {
  const auto read_with = [&](const std::string& lines) {
    return read(write("v.nrrd", "NRRD0004\ntype: uchar\ndimension: 3\nsizes: 5 4 3\nencoding: raw\n" + lines +
                                    "\n" + raw_bytes<uint8_t>(some())));
  };
  const std::string axes = "space directions: (1,2,3) (-2, 1, 0) (0,0,4)\nspace origin: (5,6,7)\n";
  expect_axes(read_with("space: left-posterior-superior\n" + axes), {{{1, 2, 3}, {-2, 1, 0}, {0, 0, 4}}},
              {5, 6, 7});
  expect_axes(read_with("space: RAS\n" + axes), {{{-1, -2, 3}, {2, -1, 0}, {0, 0, 4}}}, {-5, -6, 7});
  expect_axes(read_with("space: left-anterior-superior\n" + axes), {{{1, -2, 3}, {-2, -1, 0}, {0, 0, 4}}},
              {5, -6, 7});
  expect_axes(read_with("spacings: 1 2 +3.5\n"), {{{1, 0, 0}, {0, 2, 0}, {0, 0, 3.5}}}, {0, 0, 0});
}

TEST_F(ReadTest, GeometryOfMetaImage) {
  const std::string more =
      "TransformMatrix = 0 1 0 0 0 -1 1 0 0\nOffset = 5 6 7\nElementSpacing = 1 2 3.5\nElementDataFile = "
      "LOCAL\n";
  const Scan scan = read(write("v.mha", meta_image(some(), "MET_UCHAR", more + raw_bytes<uint8_t>(some()))));
  expect_axes(scan, {{{0, 1, 0}, {0, 0, -2}, {3.5, 0, 0}}}, {5, 6, 7});
}

class NiftiGeometry : public ReadTest {
 protected:
  template <class Number>
  void put(size_t at, std::initializer_list<Number> numbers) {
    std::memcpy(bytes_.data() + at, numbers.begin(), numbers.size() * sizeof(Number));
  }
  Scan scan() const { return read(write("v.nii", bytes_)); }
  std::string bytes_ = nifti(some());
};

// NIfTI counts to the right, to the front and up. Shear is no reason to refuse.
TEST_F(NiftiGeometry, FromRows) {
  put<float>(280, {1, 0.25F, 0, 10, 0, 2, 0, 20, 0, 0, 3, 30});
  expect_axes(scan(), {{{-1, 0, 0}, {-0.25, -2, 0}, {0, 0, 3}}}, {-10, -20, 30});
  put<uint8_t>(123, {3});  // micrometres
  expect_axes(scan(), {{{-0.001, 0, 0}, {-0.00025, -0.002, 0}, {0, 0, 0.003}}}, {-0.01, -0.02, 0.03});
}

// A turn by 120 degrees around (1, 1, 1) takes x to y, y to z, z to x; the factor turns z round.
TEST_F(NiftiGeometry, FromQuaternion) {
  put<int16_t>(252, {1, 0});
  put<float>(76, {1, 1, 2, 3});
  put<float>(256, {0.5F, 0.5F, 0.5F, 10, 20, 30});
  expect_axes(scan(), {{{0, -1, 0}, {0, 0, 2}, {-3, 0, 0}}}, {-10, -20, 30});
  put<float>(76, {-1});
  expect_axes(scan(), {{{0, -1, 0}, {0, 0, 2}, {3, 0, 0}}}, {-10, -20, 30});
  put<float>(256, {0, 1, 0});  // by 180 degrees around y
  put<float>(76, {1});
  expect_axes(scan(), {{{1, 0, 0}, {0, -2, 0}, {0, 0, -3}}}, {-10, -20, 30});
}

TEST_F(NiftiGeometry, FromSizesAlone) {
  put<int16_t>(252, {0, 0});
  put<float>(76, {1, 1, 2, 3});
  const Scan read = scan();
  expect_axes(read, {{{1, 0, 0}, {0, -2, 0}, {0, 0, 3}}}, {0, 0, 0});
  ASSERT_EQ(read.notes.size(), 1U);
  EXPECT_NE(read.notes[0].find("does not say how it lies"), std::string::npos);
}

TEST_F(ReadTest, LessCommonFormats) {
  const TestVolume volume = some();
  const std::string begin = "# vtk DataFile Version 3.0\nwords\n";
  const std::string rest =
      "\nDATASET STRUCTURED_POINTS\nDIMENSIONS 5 4 3\nSPACING 1 2 3\nORIGIN 0 0 0\nPOINT_DATA 60\n"
      "SCALARS s short\nLOOKUP_TABLE default\n";
  expect_values(read(write("v.vtk", begin + "BINARY" + rest + swapped_shorts(volume))), volume);
  const Scan scan = read(write("w.vtk", begin + "ASCII" + rest + text_of(volume)));
  expect_values(scan, volume);
  expect_axes(scan, {{{1, 0, 0}, {0, 2, 0}, {0, 0, 3}}}, {0, 0, 0});
}

TEST_F(ReadTest, FilesThatBelongTogether) {
  const TestVolume volume = some();
  write("v.nhdr", "NRRD0004\ntype: uchar\ndimension: 3\nsizes: 5 4 3\nencoding: raw\ndata file: det.raw\n");
  EXPECT_EQ(files_of(path("v.nhdr")), (std::vector{path("v.nhdr"), path("det.raw")}));
  write("v.mhd", meta_image(volume, "MET_UCHAR", "ElementDataFile = s%02d.raw 1 3 1\n"));
  EXPECT_EQ(files_of(path("v.mhd")),
            (std::vector{path("v.mhd"), path("s01.raw"), path("s02.raw"), path("s03.raw")}));
  write("p.hdr", nifti(volume).substr(0, 348));
  EXPECT_EQ(files_of(path("p.hdr")), (std::vector{path("p.hdr"), path("p.img")}));
  EXPECT_EQ(files_of(write("v.nii", nifti(volume))), std::vector{path("v.nii")});
}

}  // namespace
}  // namespace zox::input
