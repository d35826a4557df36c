// DICOM: folders of slices, single files of a series, files of many frames.
#pragma once

#include "format.h"

namespace zox::input {

std::vector<std::string> dicom_files(const std::string& path);
Found read_dicom(const std::string& path, const ReadOptions& options, VoxelMemory& memory);

// A line for each series. Throws Failure.
std::vector<std::string> dicom_series(const std::string& path, const ReadOptions& options);

// What the header of a file says.
SeriesOf dicom_series_of(const std::string& path);

}  // namespace zox::input
