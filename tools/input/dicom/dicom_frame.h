// One slice of a study: what the header of a DICOM file says of a frame, as far as pictures need it.
// Nothing else of the header is kept.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "../text.h"

namespace zox::input::dicom {

using Vector = std::array<double, 3>;

struct Window {
  double center, width;
};

// How the bits of a stored pixel are to be read.
struct PixelLayout {
  int bits_allocated = 0, bits_stored = 0, high_bit = 0;
  bool is_signed = false;
  bool operator==(const PixelLayout&) const = default;
};

struct Frame {
  std::string path;
  int index = 0;  // frame of a file that holds several

  std::string series_uid;
  std::string modality, description;  // shown in lists of series only
  std::optional<int> series_number, instance_number;

  int columns = 0, rows = 0;
  std::array<double, 2> spacing{};  // millimetres: from column to column, from row to row
  Vector along_row{}, along_column{};
  Vector position{};  // millimetres, the centre of the first pixel
  double slope = 1, intercept = 0;
  PixelLayout pixel;
  std::optional<Window> window;
};

// What a file turned out to hold.
struct FileContent {
  std::vector<Frame> frames;
  bool is_dicom = false;
  bool damaged = false;
  std::string flaw;        // why it holds no slice: the end of a sentence that begins with the file's name
  std::string series_uid;  // as far as it is known
};

// Whether the file begins as DICOM files do: "DICM" after the preamble, or with a data set from the
// first byte on, as old devices write it.
bool looks_like_dicom(const std::string& path);

// Reads the header of one file. Never throws for what the file holds.
FileContent read_frames(const std::string& path);

}  // namespace zox::input::dicom
