// ITK: the volume resampled on the grid of all samples, then the maximum along it.
#include <itkImage.h>
#include <itkLinearInterpolateImageFunction.h>
#include <itkMaximumProjectionImageFilter.h>
#include <itkResampleImageFilter.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "contender.h"

namespace bench {
namespace {

template <class Value>
class Itk : public Contender {
  using Volume = itk::Image<Value, 3>;

 public:
  Itk(const Voxels& voxels, int threads) : threads_(threads) {
    volume_ = Volume::New();
    typename Volume::SizeType size;
    for (unsigned a = 0; a < 3; ++a) size[a] = static_cast<itk::SizeValueType>(voxels.size[a]);
    volume_->SetRegions(size);
    volume_->SetSpacing(voxels.spacing.data());
    volume_->Allocate();
    std::memcpy(volume_->GetBufferPointer(), voxels.bytes.data(), voxels.bytes.size());
  }

  void draw(const Job& job) override {
    job_ = job;
    using Resample = itk::ResampleImageFilter<Volume, Volume, double>;
    using Project = itk::MaximumProjectionImageFilter<Volume, Volume>;
    const auto resample = Resample::New();
    resample->SetInput(volume_);
    resample->SetInterpolator(itk::LinearInterpolateImageFunction<Volume, double>::New());
    resample->SetDefaultPixelValue(std::numeric_limits<Value>::lowest());
    // Half the box's diagonal before and behind the middle.
    double diagonal = 0;
    for (size_t a = 0; a < 3; ++a)
      diagonal += std::pow((job.voxels->size[a] - 1) * job.voxels->spacing[a], 2);
    const int reach = static_cast<int>(std::ceil(std::sqrt(diagonal) / 2 / job.step));
    typename Volume::DirectionType direction;
    typename Volume::PointType origin;
    const double corner = (job.edge - 1) / 2.0 * job.pixel_size;
    for (unsigned a = 0; a < 3; ++a) {
      direction[a][0] = job.right[a];
      direction[a][1] = -job.up[a];
      direction[a][2] = job.forward[a];
      origin[a] =
          job.center[a] - corner * job.right[a] + corner * job.up[a] - reach * job.step * job.forward[a];
    }
    const double spacing[3] = {job.pixel_size, job.pixel_size, job.step};
    const auto edge = static_cast<itk::SizeValueType>(job.edge);
    resample->SetSize({{edge, edge, static_cast<itk::SizeValueType>(2 * reach + 1)}});
    resample->SetOutputOrigin(origin);
    resample->SetOutputDirection(direction);
    resample->SetOutputSpacing(spacing);
    const auto project = Project::New();
    project->SetProjectionDimension(2);
    project->SetInput(resample->GetOutput());
    resample->SetNumberOfWorkUnits(static_cast<itk::ThreadIdType>(threads_));
    project->SetNumberOfWorkUnits(static_cast<itk::ThreadIdType>(threads_));
    project->Update();
    picture_ = project->GetOutput();
  }

  Image image() const override {
    const size_t count = static_cast<size_t>(job_.edge) * static_cast<size_t>(job_.edge);
    Image image{job_.edge, std::vector<unsigned char>(count)};
    for (size_t i = 0; i < count; ++i) {
      const double level = (picture_->GetBufferPointer()[i] - job_.black) / (job_.white - job_.black) * 255;
      image.pixels[i] = static_cast<unsigned char>(std::clamp(level, 0.0, 255.0));
    }
    return image;
  }

 private:
  int threads_;
  Job job_{};
  typename Volume::Pointer volume_, picture_;
};

}  // namespace

std::unique_ptr<Contender> make_itk(const Voxels& voxels, int threads) {
  if (voxels.type == ZOX_RENDER_UINT8) return std::make_unique<Itk<unsigned char>>(voxels, threads);
  return std::make_unique<Itk<short>>(voxels, threads);
}

}  // namespace bench
