// The DICOM files of a folder, sorted into series.
#pragma once

#include <string>
#include <vector>

#include "series.h"

namespace zox::input::dicom {

struct Study {
  std::vector<Series> series;
  size_t files = 0, not_dicom = 0;
  size_t closed = 0;  // files beside the one that is named, which may not be read
  struct Flaw {
    std::string sentence, series_uid;
  };
  std::vector<Flaw> flaws;  // of the DICOM files that hold no slice
  std::vector<std::string> notes() const;
};

// A folder: every file in it and below, without following links to folders. A file: the slices of its
// series beside it, or the file alone if it holds several frames. With a `list`: its files and no others.
// Throws std::runtime_error with a sentence where there is no slice at all, or a file that is damaged or
// may not be read: what it was cannot be known.
Study read_study(const std::string& path, const std::vector<std::string>& list = {});

// The files that read_study may take slices from.
std::vector<std::string> files_of_study(const std::string& path);

// The series that is wanted: by its number in the list from 1 on; "": the one with most voxels. Throws
// std::runtime_error with a sentence, also where a slice of that series cannot be used.
const Series& choose(const Study& study, const std::string& wanted, std::vector<std::string>& notes);

}  // namespace zox::input::dicom
