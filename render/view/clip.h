// Which samples of a ray may be taken: those whose voxels the volume has.
#pragma once

#include <vector>

#include "view/rays.h"
#include "volume/volume.h"

namespace render {

// The positions that may be sampled, in grid units, both ends included.
struct SampleBox {
  std::array<double, 3> low, high;
};

// All samples that are the volume's own. Between the centres of the voxels for trilinear samples, up to the
// outer faces (the upper ones excluded) for nearest ones.
SampleBox owned_box(const Volume& volume, bool nearest);
// Of these, what the sampling operations may read: not the last voxel's centre where no next voxel is.
SampleBox readable_box(const Volume& volume, bool nearest);

// The samples of a line within both.
Stretch clip(const SampleBox& box, const Line& line, const Stretch& within);

// Those of a tile's lines.
void clip(const SampleBox& box, const LineLanes& lines, const Stretch& within, StretchLanes& samples);

// A piece of a ray within one region of slices; the third coordinate of its line counts slices.
struct Piece {
  Line line;
  Stretch samples;
};

// The piece of a line that lies in a region (by its number). The first and last slice's region reach out by
// half a gap for nearest samples. Steps are rounded so that no sample leaves the region.
Piece piece_in_region(const Frame& frame, size_t region, bool nearest, const Line& line,
                      const Stretch& within);

}  // namespace render
