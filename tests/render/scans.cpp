#include "scans.h"

#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>

namespace zox_test {
namespace {

constexpr char kBrain[] = "/usr/share/mricron/templates/ch2better.nii.gz";
constexpr char kHead[] = "/usr/share/doc/invesalius-examples/examples/Cranium.inv3";

// All of a compressed file; empty when there is none.
std::vector<char> inflate_file(const char* path) {
  std::vector<char> bytes;
  if (!std::ifstream(path).good()) return bytes;
  gzFile file = gzopen(path, "rb");
  char block[1 << 16];
  for (int got = 0; (got = gzread(file, block, sizeof block)) > 0;)
    bytes.insert(bytes.end(), block, block + got);
  gzclose(file);
  return bytes;
}

template <class T>
T at(const std::vector<char>& bytes, size_t offset) {
  T value;
  std::memcpy(&value, bytes.data() + offset, sizeof value);
  return value;
}

// The file whose name ends so, within a tar: blocks of 512 bytes, the name first, the size at 124.
size_t find_in_tar(const std::vector<char>& tar, const std::string& end_of_name) {
  for (size_t offset = 0; offset + 512 <= tar.size();) {
    const std::string name(&tar[offset], strnlen(&tar[offset], 100));
    const size_t size = std::strtoull(std::string(&tar[offset + 124], 12).c_str(), nullptr, 8);
    if (name.ends_with(end_of_name)) return offset + 512;
    offset += 512 + (size + 511) / 512 * 512;
  }
  return tar.size();
}

}  // namespace

std::unique_ptr<Scene> read_brain() {
  const std::vector<char> file = inflate_file(kBrain);
  if (file.empty()) return nullptr;
  const std::array<int, 3> size = {at<int16_t>(file, 42), at<int16_t>(file, 44), at<int16_t>(file, 46)};
  const size_t begin = static_cast<size_t>(at<float>(file, 108));
  const size_t count =
      static_cast<size_t>(size[0]) * static_cast<size_t>(size[1]) * static_cast<size_t>(size[2]);
  std::vector<double> voxels(count);
  for (size_t i = 0; i < count; ++i) voxels[i] = at<uint8_t>(file, begin + i);
  // Its columns run to the patient's right and its rows to the face.
  auto scene = make_scene(ZOX_RENDER_UINT8, size, std::move(voxels));
  scene->array.axes[0][0] = scene->array.axes[1][1] = -0.5;
  scene->array.axes[2][2] = 0.5;
  return scene;
}

std::unique_ptr<Scene> read_head() {
  const std::vector<char> tar = inflate_file(kHead);
  const size_t begin = find_in_tar(tar, "matrix.dat");
  const size_t count = 256 * 256 * 108;
  if (begin + 2 * count > tar.size()) return nullptr;
  std::vector<double> voxels(count);
  for (size_t i = 0; i < count; ++i) voxels[i] = at<int16_t>(tar, begin + 2 * i);
  auto scene = make_scene(ZOX_RENDER_INT16, {256, 256, 108}, std::move(voxels));
  scene->array.axes[0][0] = 0.957;
  scene->array.axes[1][1] = -0.957;
  scene->array.axes[2][2] = 1.5;
  return scene;
}

std::unique_ptr<Scene> head_in_8_bits(const Scene& head) {
  const auto [lowest, highest] = std::minmax_element(head.voxels.begin(), head.voxels.end());
  const double unit = (*highest - *lowest) / 255;
  std::vector<double> voxels;
  for (const double voxel : head.voxels) voxels.push_back(std::floor((voxel - *lowest) / unit));
  auto scene = make_scene(ZOX_RENDER_UINT8, {256, 256, 108}, std::move(voxels));
  std::copy(&head.array.axes[0][0], &head.array.axes[0][0] + 9, &scene->array.axes[0][0]);
  return scene;
}

}  // namespace zox_test
