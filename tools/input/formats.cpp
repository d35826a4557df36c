#include <filesystem>

#include "file.h"
#include "hdf5_volume.h"
#include "itk_names.h"
#include "meta_image.h"
#include "nifti.h"
#include "nrrd.h"
#include "readers.h"
#include "slices.h"
#include "text.h"

namespace zox::input {
namespace {

std::vector<std::string> itself(const std::string& path) { return {path}; }

std::vector<std::string> dicom_files(const std::string& path) { return readers_for(path).dicom_files(path); }

Found read_dicom(const std::string& path, const ReadOptions& options, VoxelMemory& memory) {
  return readers_for(path).read_dicom(path, options, memory);
}

Found read_itk_format(const std::string& path, const ReadOptions& options, VoxelMemory& memory) {
  return readers_for(path).read_itk_format(path, options, memory);
}

constexpr Format kDicom = {"DICOM", is_dicom, dicom_files, read_dicom};
constexpr Format kSlices = {"slices", is_slice_folder, slice_folder_files, read_slices, read_slices_block};

// In the order in which they are asked.
constexpr Format kFormats[] = {
    {"NIfTI", is_nifti, nifti_files, read_nifti},
    {"MetaImage", is_meta_image, meta_image_files, read_meta_image},
    kDicom,
    {"NRRD", is_nrrd, nrrd_files, read_nrrd},
    {"HDF5", is_hdf5, itself, read_hdf5, read_hdf5_block},
    {"other", is_itk_format, itself, read_itk_format},
};

}  // namespace

const Format& format_of(const std::string& path) {
  if (std::error_code error; std::filesystem::is_directory(path, error))
    return is_slice_folder(path) ? kSlices : kDicom;
  const File file(path);
  for (const Format& format : kFormats)
    if (format.recognizes(path)) return format;
  if (file.size() == 0) refuse(quoted(path) + " is empty.");
  refuse(quoted(path) + " is in no format that can be read; docs/zox-mip.md lists those that can.");
}

}  // namespace zox::input
