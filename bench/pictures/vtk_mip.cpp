// From a file to a PNG through VTK alone:
//   bench_vtk_mip FILE OUT THREADS orthographic|perspective AZIMUTH ELEVATION BLACK WHITE PIXEL_SIZE
#include <vtkImageData.h>
#include <vtkMetaImageReader.h>
#include <vtkNIFTIImageReader.h>
#include <vtkNew.h>
#include <vtkPNGWriter.h>
#include <vtkSmartPointer.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <numbers>
#include <string>

#include "vtk_contender.h"

namespace {

constexpr int kEdge = 512;

vtkSmartPointer<vtkImageData> read(const std::string& file) {
  vtkSmartPointer<vtkImageReader2> reader;
  if (file.ends_with(".mhd"))
    reader = vtkSmartPointer<vtkMetaImageReader>::New();
  else
    reader = vtkSmartPointer<vtkNIFTIImageReader>::New();
  reader->SetFileName(file.c_str());
  reader->Update();
  return reader->GetOutput();
}

bench::Job job_of(vtkImageData* data, char** argv) {
  bench::Job job{};
  job.perspective = std::strcmp(argv[4], "perspective") == 0;
  job.edge = kEdge;
  const double a = std::atof(argv[5]) * std::numbers::pi / 180,
               e = std::atof(argv[6]) * std::numbers::pi / 180;
  job.forward = {-std::cos(e) * std::sin(a), std::cos(e) * std::cos(a), -std::sin(e)};
  job.up = {-std::sin(e) * std::sin(a), std::sin(e) * std::cos(a), std::cos(e)};
  job.black = std::atof(argv[7]);
  job.white = std::atof(argv[8]);
  job.pixel_size = std::atof(argv[9]);
  job.field_of_view = 30;
  job.eye_distance = kEdge * job.pixel_size / 2 / std::tan(15 * std::numbers::pi / 180);
  data->GetCenter(job.center.data());
  const double* spacing = data->GetSpacing();
  job.step = std::min({spacing[0], spacing[1], spacing[2]});
  return job;
}

void write(const bench::Image& image, const char* file) {
  vtkNew<vtkImageData> picture;
  picture->SetDimensions(image.edge, image.edge, 1);
  picture->AllocateScalars(VTK_UNSIGNED_CHAR, 1);
  for (int row = 0; row < image.edge; ++row)  // VTK's rows begin at the bottom
    std::memcpy(picture->GetScalarPointer(0, image.edge - 1 - row, 0),
                image.pixels.data() + static_cast<size_t>(row) * static_cast<size_t>(image.edge),
                static_cast<size_t>(image.edge));
  vtkNew<vtkPNGWriter> writer;
  writer->SetFileName(file);
  writer->SetInputData(picture);
  writer->Write();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 10) {
    std::fprintf(stderr, "bench_vtk_mip: nine arguments, see the source\n");
    return 2;
  }
  const auto data = read(argv[1]);
  const auto vtk = bench::make_vtk(data, std::atoi(argv[3]));
  vtk->draw(job_of(data, argv));
  write(vtk->image(), argv[2]);
}
