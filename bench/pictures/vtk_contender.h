// VTK's ray caster for voxels that VTK holds.
#pragma once

#include <memory>

#include "contender.h"

class vtkImageData;

namespace bench {

std::unique_ptr<Contender> make_vtk(vtkImageData* data, int threads);

}  // namespace bench
