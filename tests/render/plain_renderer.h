// A plain renderer in doubles: every sample of every ray on its own, written from the words of
// zox_render.h alone. It knows what the library cannot promise to the last bit, where a sample lies:
// every sample comes with the smallest and largest value that it may have within that play.
#pragma once

#include <cstdint>
#include <vector>

#include "vec.h"
#include "zox_render.h"

namespace zox_test {

// What is rendered: samples as the library's volume info says that it keeps them, x fastest.
struct PlainVolume {
  std::array<int, 3> size;
  std::vector<double> samples;
  Vec axes[3];
  Vec origin;
  std::vector<double> positions;  // of uneven slices; empty: even ones

  double at(int x, int y, int z) const {
    return samples[(static_cast<size_t>(z) * static_cast<size_t>(size[1]) + static_cast<size_t>(y)) *
                       static_cast<size_t>(size[0]) +
                   static_cast<size_t>(x)];
  }
  Vec millimetres(const Vec& voxel) const;  // also between uneven slices
  Vec center() const;
};

struct PlainSample {
  int number;
  double value;           // at the ideal position, or nearly so
  double low, high;       // within the play of the position
  double least, largest;  // of the voxels that it may be made from
  bool sure;              // false: so near to the border that it may be left out
};

// How far samples may stray, in voxels: `start` once and `step` more with each sample number, and
// `weight` more along y and z towards the lower voxel; how far their values may then fall; and how near
// to the border a sample need not be taken, beside all that.
struct Play {
  double start = 0, step = 0, weight = 0, value = 0, border = 1e-9;
  double slices = 1;  // how much more of all this along uneven slices
};

class PlainRenderer {
 public:
  // pixel_size and step in millimetres: what the view asks for by zoom and by voxels.
  PlainRenderer(const PlainVolume& volume, const zox_render_view& view, double pixel_size, double step,
                const Play& play = {});

  Vec right() const { return right_; }
  Vec up() const { return up_; }
  Vec forward() const { return forward_; }
  double eye_distance() const { return eye_distance_; }

  Vec position(double column, double row, double sample) const;
  Vec voxel(const Vec& millimetres) const;  // beyond the first and last slice: by the nearest spacing

  // Every sample that pixel's ray may take, from the viewer on.
  void ray(int column, int row, std::vector<PlainSample>& samples) const;

 private:
  struct Range {
    int first, last;
  };
  Range sample_numbers(int column, int row) const;
  bool within_slab(double sample) const;
  bool take(double number, const Vec& voxel, PlainSample& sample) const;
  void spread_trilinear(const Vec& voxel, const Vec& below, const Vec& above, PlainSample& sample) const;
  void spread_nearest(const Vec& voxel, const Vec& below, const Vec& above, PlainSample& sample) const;

  const PlainVolume& volume_;
  zox_render_view view_;
  double pixel_size_, step_;
  Play play_;
  Vec right_, up_, forward_, center_, third_axis_;
  double eye_distance_ = 0;
};

}  // namespace zox_test
