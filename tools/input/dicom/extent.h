// Where the pixels of a DICOM file begin and whether the file reaches to their end. The library that
// reads the files fills up in silence what a cut-off one lacks.
#pragma once

#include <string>

namespace zox::input::dicom {

struct Encoding {
  bool explicit_types = true;  // two letters before every length
  bool big_endian = false;
};

// Whether all bytes of the pixel element, whether plain or in fragments, are in the file.
bool holds_all_pixels(const std::string& path, Encoding encoding);

}  // namespace zox::input::dicom
