#include "files.h"

#include <zlib.h>

#include <cmath>
#include <cstring>
#include <random>
#include <sstream>

TestVolume random_volume(std::array<int, 3> size, int low, int high, unsigned seed) {
  return coarse_volume(size, low, high, 1, low, seed);
}

TestVolume coarse_volume(std::array<int, 3> size, int low, int high, int unit, double border, unsigned seed) {
  TestVolume volume;
  volume.size = size;
  std::mt19937 random(seed);
  std::uniform_int_distribution<int> value(low / unit, high / unit);
  for (int z = 0; z < size[2]; ++z)
    for (int y = 0; y < size[1]; ++y)
      for (int x = 0; x < size[0]; ++x) {
        const bool inside = x > 0 && y > 0 && z > 0 && x < size[0] - 1 && y < size[1] - 1 && z < size[2] - 1;
        volume.values.push_back(inside ? value(random) * unit : border);
      }
  return volume;
}

std::string nrrd(const TestVolume& volume, const std::string& type, const std::string& raw) {
  std::ostringstream header;
  header.precision(17);
  header << "NRRD0004\ntype: " << type
         << "\ndimension: 3\nspace: left-posterior-superior\nsizes: " << volume.size[0] << ' '
         << volume.size[1] << ' ' << volume.size[2] << "\nspace directions:";
  for (const Point& axis : volume.axes) header << " (" << axis[0] << ',' << axis[1] << ',' << axis[2] << ')';
  header << "\nkinds: domain domain domain\nendian: little\nencoding: raw\n\n";
  return header.str() + raw;
}

std::string nifti(const TestVolume& volume) {
  std::string header(352, '\0');
  const auto put = [&](size_t offset, auto value) {
    std::memcpy(header.data() + offset, &value, sizeof value);
  };
  put(0, int32_t{348});
  put(40, int16_t{3});
  for (size_t axis = 0; axis < 3; ++axis) put(42 + 2 * axis, static_cast<int16_t>(volume.size[axis]));
  for (size_t axis = 3; axis < 7; ++axis) put(42 + 2 * axis, int16_t{1});
  put(70, int16_t{2});  // unsigned bytes
  put(72, int16_t{8});
  put(76, 1.0F);
  for (size_t axis = 0; axis < 3; ++axis) {
    const Point& a = volume.axes[axis];
    put(80 + 4 * axis, static_cast<float>(std::hypot(a[0], a[1], a[2])));
    for (size_t row = 0; row < 3; ++row)
      put(280 + 16 * row + 4 * axis, static_cast<float>(row < 2 ? -a[row] : a[row]));
  }
  put(108, 352.0F);
  put(254, int16_t{1});  // the rows above are scanner coordinates
  std::memcpy(header.data() + 344, "n+1", 4);
  return header + raw_bytes<uint8_t>(volume);
}

std::string gzipped(const std::string& bytes) {
  std::string packed(bytes.size() + 1000, '\0');
  z_stream stream{};
  deflateInit2(&stream, 6, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  deflate(&stream, Z_FINISH);
  packed.resize(stream.total_out);
  deflateEnd(&stream);
  return packed;
}
