// Times another library's interpolators on rays and voxels of the benchmarks, beside this library's
// widest instruction set: rows of a table, ns a sample.
#include <itkImage.h>
#include <itkLinearInterpolateImageFunction.h>
#include <itkNearestNeighborInterpolateImageFunction.h>
#include <itkVersion.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "operations/table.h"
#include "output_planes.h"
#include "phantom.h"
#include "timing.h"
#include "views.h"

namespace {

constexpr int kEdge = 256;
constexpr int kRounds = 7;

template <class Value>
using Image = itk::Image<Value, 3>;

template <class Value>
typename Image<Value>::Pointer image_of(const bench::Volume& volume) {
  auto image = Image<Value>::New();
  image->SetRegions(typename Image<Value>::SizeType{{kEdge, kEdge, kEdge}});
  image->Allocate();
  Value* row = image->GetBufferPointer();
  for (int z = 0; z < kEdge; ++z)
    for (int y = 0; y < kEdge; ++y, row += kEdge)
      std::memcpy(row, static_cast<const std::byte*>(volume.slices[z]) + volume.row_offsets[y],
                  kEdge * sizeof(Value));
  return image;
}

template <class Value, class Interpolator>
void cast(const Interpolator& interpolator, const zox_Rays& rays) {
  const double* step = rays.steps[0];
  for (int r = 0; r < rays.nrays; ++r) {
    itk::ContinuousIndex<double, 3> at;
    for (int a = 0; a < 3; ++a) at[a] = rays.starts[r][a];
    for (int k = 0; k < rays.nsamples[r]; ++k) {
      const double value = interpolator.EvaluateAtContinuousIndex(at);
      static_cast<Value*>(rays.planes[k])[r] = static_cast<Value>(value);
      for (int a = 0; a < 3; ++a) at[a] += step[a];
    }
  }
}

// Both sample alike but for rounding: few samples may differ by more than one.
template <class Value>
void require_alike(const bench::Batch& batch, const bench::Planes& ours, const bench::Planes& theirs) {
  int64_t differing = 0;
  for (int r = 0; r < batch.record.nrays; ++r)
    for (int k = 0; k < batch.counts[r]; ++k)
      differing += std::abs(static_cast<const Value*>(ours.pointers[k])[r] -
                            static_cast<const Value*>(theirs.pointers[k])[r]) > 1;
  if (differing * 100 <= batch.samples()) return;
  std::fprintf(stderr, "bench_peers: the libraries sample different points\n");
  std::exit(1);
}

template <class Value, class Interpolator>
void compare(const bench::Volume& volume, zox::RayCast function, const char* sampling, const char* peer) {
  const auto image = image_of<Value>(volume);
  const auto interpolator = Interpolator::New();
  interpolator->SetInputImage(image);
  std::vector<bench::Batch> batches = bench::make_batches(volume, "oblique", "cached");
  const std::size_t spacing = 64 * sizeof(Value) + 64;
  bench::Planes ours(2 * kEdge, spacing), theirs(2 * kEdge, spacing);
  int64_t samples = 0;
  for (bench::Batch& batch : batches) {
    samples += batch.samples();
    batch.record.planes = theirs.pointers.data();
    cast<Value>(*interpolator, batch.record);
    batch.record.planes = ours.pointers.data();
    function(&volume.record, &batch.record);
    require_alike<Value>(batch, ours, theirs);
  }
  std::vector<double> our_seconds, their_seconds;
  for (int round = 0; round < kRounds; ++round) {
    const double start = bench::cpu_seconds();
    for (const bench::Batch& batch : batches) function(&volume.record, &batch.record);
    const double middle = bench::cpu_seconds();
    for (const bench::Batch& batch : batches) cast<Value>(*interpolator, batch.record);
    our_seconds.push_back(middle - start);
    their_seconds.push_back(bench::cpu_seconds() - middle);
  }
  const double scale = 1e9 / static_cast<double>(samples);
  std::printf("| %s | this library, %s | %.3g |\n", sampling, zox::pick().name,
              bench::median(our_seconds) * scale);
  std::printf("| %s | ITK %s, %s | %.3g |\n", sampling, itk::Version::GetITKVersion(), peer,
              bench::median(their_seconds) * scale);
}

template <class Value>
void compare_both(bench::Element element, zox::RayCast nearest, zox::RayCast trilinear, const char* type) {
  bench::Volume volume;
  bench::fill_volume(volume, "1region", element, {kEdge, kEdge});
  compare<Value, itk::NearestNeighborInterpolateImageFunction<Image<Value>, double>>(
      volume, nearest, (std::string("nearest ") + type).c_str(), "NearestNeighborInterpolateImageFunction");
  compare<Value, itk::LinearInterpolateImageFunction<Image<Value>, double>>(
      volume, trilinear, (std::string("trilinear ") + type).c_str(), "LinearInterpolateImageFunction");
}

}  // namespace

int main() {
  const zox::Operations& operations = zox::pick();
  compare_both<uint8_t>(bench::Element::k8U, operations.general_parallel_nearest_8u,
                        operations.general_parallel_trilinear_8u, "8U");
  compare_both<int16_t>(bench::Element::k16S, operations.general_parallel_nearest_16s,
                        operations.general_parallel_trilinear_16s, "16S");
}
