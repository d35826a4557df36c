// A volume as it is kept, ready to be sampled.
#pragma once

#include <zox_volume.h>

#include <memory>
#include <vector>

#include "cast/work.h"
#include "volume/array.h"
#include "volume/bounds.h"
#include "volume/frame.h"
#include "volume/memory.h"
#include "volume/statistics.h"
#include "volume/storage.h"

namespace render {

enum class Layout { kBricks, kStack };

// Slices as the stack operations take them. A slice stands before the first and one after the last, so
// that the half voxel around a stack's end can be reached within its boundaries.
struct Stack {
  std::vector<const void*> slices;   // of slice s: [s + 1]
  std::vector<int32_t> row_offsets;  // one more than there are rows
  const int16_t* row(int y, int z) const {
    return reinterpret_cast<const int16_t*>(
        static_cast<const std::byte*>(slices[static_cast<size_t>(z) + 1]) +
        row_offsets[static_cast<size_t>(y)]);
  }
};

// Bricks of 64 x 64 x 32 voxels, of cells of 4 x 4 x 2.
struct Bricks {
  const int16_t* data = nullptr;
  int edge = 0;    // of the grid in x and y, in voxels: a power of two
  int middle = 0;  // of the guarded samples
  uint64_t x_term(int x) const;
  uint64_t y_term(int y) const;
  uint64_t z_term(int z) const;
  void read_row(int y, int z, int columns, int16_t* samples) const;
};

struct Volume {
  Frame frame;
  Size3 size{}, first{}, owned_first{}, owned_size{};  // of the array, within the whole
  Storage storage;
  bool exact = true;
  double lowest = 0, highest = 0;  // values of the array
  Layout layout = Layout::kStack;
  Memory memory;
  Stack stack;
  Bricks bricks;
  // Whether the operations may read one voxel beyond the last along an axis (with a weight of 0).
  bool has_next[3] = {};
  bool copied = true;
  uint64_t voxel_bytes = 0;
  Bounds bounds;
  mutable Statistics statistics;  // guarded by itself

  int sample(int x, int y, int z) const;
  void read_row(int y, int z, int16_t* samples) const;
  const Statistics& counted(Work& work) const;
};

std::unique_ptr<Volume> make_volume(const zox_render_array& record, const zox_render_volume_options& options,
                                    Work& work);

// Whether the stack operations can sample the caller's slices as they stand.
bool fits_stack(const Array& array, const Storage& storage);
void refer_to_slices(const Array& array, Volume& volume);
// What the copies take, and making them.
uint64_t stack_bytes(const Size3& size);
uint64_t bricks_bytes(const Size3& size);
void copy_stack(const Array& array, Volume& volume, Work& work);
void copy_bricks(const Array& array, Volume& volume, Work& work);

}  // namespace render

struct zox_render_volume {
  std::unique_ptr<render::Volume> volume;
};
