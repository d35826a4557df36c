// VTK's ray caster for processors, without a window: its stages are called one by one, all but the
// last, which would hand the finished picture to a graphics card.
#include "vtk_contender.h"

#include <vtkAutoInit.h>
#include <vtkCamera.h>
#include <vtkColorTransferFunction.h>
#include <vtkFixedPointRayCastImage.h>
#include <vtkFixedPointVolumeRayCastMapper.h>
#include <vtkImageData.h>
#include <vtkNew.h>
#include <vtkPiecewiseFunction.h>
#include <vtkRenderWindow.h>
#include <vtkRenderer.h>
#include <vtkVolume.h>
#include <vtkVolumeProperty.h>

#include <algorithm>
#include <cstring>

VTK_MODULE_INIT(vtkRenderingOpenGL2)
VTK_MODULE_INIT(vtkRenderingVolumeOpenGL2)

namespace bench {
namespace {

class Vtk : public Contender {
 public:
  Vtk(vtkImageData* data, int threads) {
    mapper_->SetInputData(data);
    mapper_->SetBlendModeToMaximumIntensity();
    mapper_->SetNumberOfThreads(threads);
    mapper_->AutoAdjustSampleDistancesOff();
    mapper_->LockSampleDistanceToInputSpacingOff();
    mapper_->SetImageSampleDistance(1);
    mapper_->IntermixIntersectingGeometryOff();
    opacity_->AddPoint(0, 1);
    property_->SetColor(color_);
    property_->SetScalarOpacity(opacity_);
    property_->SetInterpolationTypeToLinear();
    property_->ShadeOff();
    volume_->SetMapper(mapper_);
    volume_->SetProperty(property_);
    window_->SetOffScreenRendering(1);
    window_->AddRenderer(renderer_);
    renderer_->AddVolume(volume_);
  }

  void draw(const Job& job) override {
    aim(job);
    double zeros[3] = {};
    int extent[6] = {};
    mapper_->PerImageInitialization(renderer_, volume_, 0, zeros, zeros, extent);
    mapper_->PerVolumeInitialization(renderer_, volume_);
    mapper_->PerSubVolumeInitialization(renderer_, volume_, 0);
    mapper_->RenderSubVolume();
  }

  // The mapper keeps the part of the picture that the volume covers, rows from the bottom, in 15 bits.
  Image image() const override {
    vtkFixedPointRayCastImage* cast = mapper_->GetRayCastImage();
    int used[2], memory[2], origin[2];
    cast->GetImageInUseSize(used);
    cast->GetImageMemorySize(memory);
    cast->GetImageOrigin(origin);
    Image image{edge_, std::vector<unsigned char>(static_cast<size_t>(edge_) * static_cast<size_t>(edge_))};
    for (int y = 0; y < used[1]; ++y)
      for (int x = 0; x < used[0]; ++x) {
        const int column = origin[0] + x, row = edge_ - 1 - (origin[1] + y);
        if (column < 0 || column >= edge_ || row < 0 || row >= edge_) continue;
        const unsigned short grey = cast->GetImage()[4 * (y * memory[0] + x)];
        image.pixels[static_cast<size_t>(row * edge_ + column)] =
            static_cast<unsigned char>(std::min(255, grey >> 7));
      }
    return image;
  }

 private:
  void aim(const Job& job) {
    edge_ = job.edge;
    window_->SetSize(job.edge, job.edge);
    mapper_->SetSampleDistance(static_cast<float>(job.step));
    mapper_->SetInteractiveSampleDistance(static_cast<float>(job.step));
    if (job.black != black_ || job.white != white_) {
      color_->RemoveAllPoints();
      color_->AddRGBPoint(job.black, 0, 0, 0);
      color_->AddRGBPoint(job.white, 1, 1, 1);
      black_ = job.black;
      white_ = job.white;
    }
    // An orthographic viewer only has to stand outside.
    const double distance = job.perspective ? job.eye_distance : job.edge * job.pixel_size * 2;
    vtkCamera* camera = renderer_->GetActiveCamera();
    double eye[3];
    for (size_t a = 0; a < 3; ++a) eye[a] = job.center[a] - distance * job.forward[a];
    camera->SetFocalPoint(job.center.data());
    camera->SetPosition(eye);
    camera->SetViewUp(job.up.data());
    camera->SetParallelProjection(!job.perspective);
    camera->SetViewAngle(job.field_of_view);
    camera->SetParallelScale(job.edge * job.pixel_size / 2);
    camera->SetClippingRange(distance / 100, 3 * distance);
  }

  vtkNew<vtkFixedPointVolumeRayCastMapper> mapper_;
  vtkNew<vtkColorTransferFunction> color_;
  vtkNew<vtkPiecewiseFunction> opacity_;
  vtkNew<vtkVolumeProperty> property_;
  vtkNew<vtkVolume> volume_;
  vtkNew<vtkRenderer> renderer_;
  vtkNew<vtkRenderWindow> window_;
  int edge_ = 0;
  double black_ = 0, white_ = 0;
};

}  // namespace

std::unique_ptr<Contender> make_vtk(const Voxels& voxels, int threads) {
  vtkNew<vtkImageData> data;
  data->SetDimensions(voxels.size.data());
  data->SetSpacing(voxels.spacing.data());
  data->AllocateScalars(voxels.type == ZOX_RENDER_UINT8 ? VTK_UNSIGNED_CHAR : VTK_SHORT, 1);
  std::memcpy(data->GetScalarPointer(), voxels.bytes.data(), voxels.bytes.size());
  return make_vtk(data, threads);
}

std::unique_ptr<Contender> make_vtk(vtkImageData* data, int threads) {
  return std::make_unique<Vtk>(data, threads);
}

}  // namespace bench
