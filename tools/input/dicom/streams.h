// Whether the compressed streams of a file are whole. The decoders fill up in silence what is missing.
#pragma once

#include <gdcmFile.h>

#include "dicom_frame.h"

namespace zox::input::dicom {

// Throws std::runtime_error: the end of a sentence that begins with the file's name.
void check_streams(const gdcm::File& file, const Frame& frame);

}  // namespace zox::input::dicom
