// What the samples of a bundle of rays can be at most, over a range of their numbers.
#pragma once

#include "view/clip.h"

namespace render {

// A box around samples first .. last of several lines. The lowest position of a set of lines is a concave
// function of the sample number, the highest a convex one: both lie within the chords between two numbers,
// where these are taken once over all lines.
class Bundle {
 public:
  // Lanes begin .. end - 1, an even number of them.
  void around(const LineLanes& lines, size_t begin, size_t end, double first, double last);
  void add(const Bundle& other);  // between the same numbers
  // After the last line: for the cells (or voxels, for nearest samples) of a volume's array.
  void finish(const Volume& volume, bool nearest);
  // Those that hold samples first .. last of any line.
  void cells(double first, double last, Size3& low, Size3& high) const;

 private:
  double first_ = 0, last_ = 0;
  std::array<double, 3> low_at_first_{}, low_at_last_{}, high_at_first_{}, high_at_last_{};
  // Positions in voxels of the array are begin + n * slope, one axis a lane; the last lane is none.
  struct alignas(16) Chords {
    std::array<double, 4> begin{}, slope{};
  };
  Chords low_, high_;
  alignas(16) std::array<double, 4> most_{};
};

}  // namespace render
