// Volumes for the tests, and the files that hold them.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

using Point = std::array<double, 3>;

struct TestVolume {
  std::array<int, 3> size{};
  std::array<Point, 3> axes{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};  // mm per voxel step; left, back, up
  std::vector<double> values;                                    // x fastest

  double at(int x, int y, int z) const {
    return values[static_cast<size_t>(x) +
                  static_cast<size_t>(size[0]) *
                      (static_cast<size_t>(y) + static_cast<size_t>(size[1]) * static_cast<size_t>(z))];
  }
};

// Integers from low to high, each as likely, within a border one voxel thick that is low.
TestVolume random_volume(std::array<int, 3> size, int low, int high, unsigned seed);

// The same with multiples of `unit` and a border of another value: interpolated half or a quarter of the
// way, multiples of 16 remain whole numbers.
TestVolume coarse_volume(std::array<int, 3> size, int low, int high, int unit, double border, unsigned seed);

// The bytes of the values as T, the lower byte first.
template <class T>
std::string raw_bytes(const TestVolume& volume) {
  std::string bytes;
  for (const double value : volume.values) {
    const T voxel = static_cast<T>(value);
    bytes.append(reinterpret_cast<const char*>(&voxel), sizeof(T));
  }
  return bytes;
}

// An NRRD file of the volume; `type` is NRRD's word for the type that `raw` holds.
std::string nrrd(const TestVolume& volume, const std::string& type, const std::string& raw);

// A NIfTI-1 file of unsigned bytes with the volume's axes, which NIfTI counts to the right, to the
// front and up.
std::string nifti(const TestVolume& volume);

std::string gzipped(const std::string& bytes);
