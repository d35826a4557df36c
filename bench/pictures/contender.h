// What every contender draws: the same voxels, the same rays.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "zox_render.h"

namespace bench {

using Vec = std::array<double, 3>;

// Packed voxels of 8 or 16 bits, x fastest; x grows to the patient's left, y to the back, z to the head.
struct Voxels {
  std::string name;
  int type;  // ZOX_RENDER_UINT8 or ZOX_RENDER_INT16
  std::array<int, 3> size;
  Vec spacing;
  std::vector<std::byte> bytes;
};

// "brain", "head 8 bits", "head 16 bits" or "noise"; empty voxels where the scan is not installed.
Voxels read_voxels(const std::string& name);

// A picture to be drawn, in millimetres from voxel (0, 0, 0).
struct Job {
  const Voxels* voxels;
  bool perspective;
  int edge;  // pixels each way
  Vec right, up, forward, center;
  double pixel_size, eye_distance, field_of_view, step;
  double black, white;
  double azimuth, elevation;
};

struct Image {
  int edge = 0;
  std::vector<unsigned char> pixels;  // rows from the top
};

// Draws a job's picture; what can be kept from picture to picture is kept.
class Contender {
 public:
  virtual ~Contender() = default;
  virtual void draw(const Job& job) = 0;
  virtual Image image() const = 0;  // the last one
};

std::unique_ptr<Contender> make_zox(const Voxels& voxels, int threads, bool skip);
std::unique_ptr<Contender> make_vtk(const Voxels& voxels, int threads);
std::unique_ptr<Contender> make_kernel(const Voxels& voxels);            // of one thread
std::unique_ptr<Contender> make_itk(const Voxels& voxels, int threads);  // orthographic only

// The samples that a picture has without skipping.
long long samples_of(const Job& job);

// The job's view in this library's words, and back, a job for each azimuth: what the others need is asked
// from it.
zox_render_view view_of(const Job& job);
std::vector<Job> make_jobs(const Voxels& voxels, bool perspective, int edge,
                           const std::vector<double>& azimuths, double elevation);

}  // namespace bench
