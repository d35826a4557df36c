// What the module of readers shows.
#include "dicom.h"
#include "itk_formats.h"
#include "readers.h"
#include "tiff_slice.h"

extern "C" __attribute__((visibility("default"))) const zox::input::Readers* zox::input::zox_readers() {
  static constexpr Readers kReaders = {ZOX_VERSION,     dicom_files,         read_dicom,     dicom_series,
                                       dicom_series_of, describe_tiff_slice, read_tiff_rows, read_itk_format};
  return &kReaders;
}
