// The less common formats, which ITK reads: VTK, TIFF, LSM, GIPL, MRC, Bio-Rad and Stimulate.
#pragma once

#include "format.h"

namespace zox::input {

Found read_itk_format(const std::string& path, const ReadOptions& options, VoxelMemory& memory);

}  // namespace zox::input
