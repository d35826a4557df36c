// The volumes that a command line names: each input one, but the DICOM files of one series together.
#pragma once

#include <scan.h>

#include <string>
#include <vector>

#include "jobs.h"
#include "options.h"

namespace zox_mip {

struct Study {
  std::vector<std::string> files;  // one file or folder; several: a list of DICOM files; none: the phantom
  std::string name;                // for {name}
  std::vector<Job> jobs;

  // As it is called in reports, and in sentences.
  std::string title() const;
  std::string quoted_title() const;
};

// What {name} stands for: the name of the file without its suffix, of the folder, of the folder of a
// list. It holds no slash, is no "..", and moves no terminal's cursor.
std::string name_of(const std::vector<std::string>& files);

zox::input::ReadOptions read_options(const Study& study, const Options& options);

// Sorted into studies, in the order of the command line; no jobs yet.
std::vector<Study> find_studies(const Options& options);

// Gives each its jobs. Throws Failure unless every output has a good name and place of its own and is
// none of the files that are read, for whichever study.
void plan(std::vector<Study>& studies, const Options& options);

}  // namespace zox_mip
