// The files of a folder whose slices are files of their own, in order.
#pragma once

#include <string>
#include <vector>

namespace zox::input {

// Whether there are files named as slices (.tif, .tiff, .nrrd, .nhdr) in a folder and none of DICOM. Below it
// there may be DICOM files, if the names count slices: else they are volumes beside a study.
bool holds_slices(const std::string& folder);

struct SliceFiles {
  std::vector<std::string> paths;  // from the lowest number to the highest
  int passed_over = 0;             // files that bear other names; hidden ones do not count
};

// Throws Failure where the names are no row of numbers, or where one of the row is missing.
SliceFiles slice_files(const std::string& folder);

}  // namespace zox::input
