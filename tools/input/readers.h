// The readers that stand on large libraries, in a module of their own: starting those libraries takes longer
// than rendering a small picture, and most files need none of them. The module is loaded where a file does.
#pragma once

#include "format.h"
#include "slice.h"

namespace zox::input {

struct Readers {
  const char* version;  // of the release that the module belongs to
  // DICOM, see dicom.h.
  decltype(Format::files) dicom_files;
  decltype(Format::read) read_dicom;
  std::vector<std::string> (*dicom_series)(const std::string& path, const ReadOptions& options);
  SeriesOf (*dicom_series_of)(const std::string& path);
  // TIFF slices, see tiff_slice.h.
  Slice (*describe_tiff_slice)(const std::string& path);
  void (*read_tiff_rows)(const Slice& slice, int32_t first, int32_t count, std::byte* out);
  // What ITK reads, see itk_formats.h.
  decltype(Format::read) read_itk_format;
};

// The module's one function.
extern "C" const Readers* zox_readers();

// Throws Failure that names the file for which they are wanted where they cannot be loaded.
const Readers& readers_for(const std::string& path);

// Folders too: what else is in one is passed over.
bool is_dicom(const std::string& path);

}  // namespace zox::input
