// Pictures and numbers as they stand in files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct Picture {
  int width = 0;
  int height = 0;
  std::vector<uint8_t> grey;

  int at(int column, int row) const { return grey[static_cast<size_t>(row * width + column)]; }
};

// Fails the running test unless the file is an 8-bit grey PNG.
Picture read_picture(const std::string& path);

// Red, green and blue of every pixel of any PNG.
std::vector<uint8_t> read_colours(const std::string& path);

struct Deep {
  std::vector<uint16_t> pixels;
  std::string description;
};

// Fails the running test unless the file is a 16-bit grey PNG.
Deep read_deep(const std::string& path);

// The numbers of an NRRD of shorts with the keys slope, intercept and "no sample"; NaN for the latter.
struct SampleFile {
  std::vector<double> values;
  double slope = 0, intercept = 0;
};
SampleFile read_samples(const std::string& path);

// What follows the header of an NPY file of little-endian numbers, which must say `type`.
std::string read_npy(const std::string& path, const std::string& type);
std::vector<float> read_floats(const std::string& path);

// The chunks of a PNG: types and contents. Fails the running test when a checksum is wrong.
struct Chunk {
  std::string type, content;
};
std::vector<Chunk> read_chunks(const std::string& path);
