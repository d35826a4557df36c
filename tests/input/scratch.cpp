#include "scratch.h"

#include <stdlib.h>
#include <zlib.h>

#include <cstring>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

ScratchTest::ScratchTest() {
  std::string name = (fs::temp_directory_path() / "zox-input-test.XXXXXX").string();
  if (!mkdtemp(name.data())) throw std::runtime_error("no folder for the test");
  folder_ = name;
}

ScratchTest::~ScratchTest() { fs::remove_all(folder_); }

std::string ScratchTest::write(const std::string& name, const std::string& bytes) const {
  std::ofstream(path(name), std::ios::binary) << bytes;
  return path(name);
}

double value_of(const zox::input::Scan& scan, int x, int y, int z) {
  const zox_render_array& array = scan.array;
  const char* at = static_cast<const char*>(array.data) + x * array.strides[0] + y * array.strides[1] +
                   z * array.strides[2];
  const auto load = [&](auto voxel) {
    std::memcpy(&voxel, at, sizeof voxel);
    return static_cast<double>(voxel) * array.slope + array.intercept;
  };
  switch (array.type) {
    case ZOX_RENDER_UINT8:
      return load(uint8_t{});
    case ZOX_RENDER_INT8:
      return load(int8_t{});
    case ZOX_RENDER_INT16:
      return load(int16_t{});
    case ZOX_RENDER_UINT16:
      return load(uint16_t{});
    case ZOX_RENDER_INT32:
      return load(int32_t{});
    case ZOX_RENDER_UINT32:
      return load(uint32_t{});
    case ZOX_RENDER_FLOAT32:
      return load(float{});
    default:
      return load(double{});
  }
}

void expect_values(const zox::input::Scan& scan, const TestVolume& volume) {
  for (size_t axis = 0; axis < 3; ++axis) ASSERT_EQ(scan.array.size[axis], volume.size[axis]);
  for (int z = 0; z < volume.size[2]; ++z)
    for (int y = 0; y < volume.size[1]; ++y)
      for (int x = 0; x < volume.size[0]; ++x)
        ASSERT_EQ(value_of(scan, x, y, z), volume.at(x, y, z)) << x << ", " << y << ", " << z;
}

std::string meta_image(const TestVolume& volume, const std::string& type, const std::string& more) {
  std::ostringstream text;
  text << "ObjectType = Image\nNDims = 3\nDimSize = " << volume.size[0] << ' ' << volume.size[1] << ' '
       << volume.size[2] << "\nElementType = " << type << "\n"
       << more;
  return text.str();
}

std::string deflated(const std::string& bytes) {
  uLongf length = compressBound(bytes.size());
  std::string packed(length, '\0');
  compress(reinterpret_cast<Bytef*>(packed.data()), &length, reinterpret_cast<const Bytef*>(bytes.data()),
           bytes.size());
  packed.resize(length);
  return packed;
}
