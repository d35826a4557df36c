/*
 * Making the records of zox_volume.h from plain arrays: bricks, slice stacks, regions, and rays cut so
 * that no sample leaves the volume. Everything here is static inline; the library exports none of it.
 * C11 and later, C++17 and later.
 *
 * A plain array is voxel (x, y, z) at element z * slice_stride + y * row_stride + x, both strides in
 * elements, of any sign. Nothing is allocated, nothing is kept, and what is not said to be checked is
 * not. All functions may be called from several threads at once on different output.
 */
#ifndef ZOX_VOLUME_LAYOUT_H
#define ZOX_VOLUME_LAYOUT_H

#include "zox_volume.h"

/*
 * ---- Bricks --------------------------------------------------------------------------------------
 */

/* The zox_Volume.size of a blocked volume with so many columns and rows: the least power of two, from
 * 64 on, that is not below either. 0 when one is below 1 or above ZOX_MAX_BLOCKED_SIZE. */
static inline int32_t zox_blocked_size(int32_t columns, int32_t rows) {
  int32_t size = 64;
  if (columns < 1 || rows < 1 || columns > ZOX_MAX_BLOCKED_SIZE || rows > ZOX_MAX_BLOCKED_SIZE) return 0;
  while (size < columns || size < rows) size *= 2;
  return size;
}

/* Elements of the buffer of a blocked volume of this size, a power of two from 64 to
 * ZOX_MAX_BLOCKED_SIZE, and so many layers. 0 when they are more than the 2^32 that an index can reach,
 * or when size or layers are below 1. */
static inline uint64_t zox_blocked_elements(int32_t size, int32_t layers) {
  uint64_t bricks, elements;
  if (size < 1 || layers < 1) return 0;
  bricks = size < 128 ? 1 : (uint64_t)size / 64;
  elements = bricks * bricks * (((uint64_t)layers + 31) / 32) * 131072;
  return elements > UINT64_C(1) << 32 ? 0 : elements;
}

/* The three terms of an element's index, for loops along one axis: their sum is the index. Coordinates
 * must not be negative. */
static inline uint32_t zox_blocked_x_term(int32_t x) {
  const uint32_t i = (uint32_t)x;
  return (i & 3) + (((i >> 2) & 15) << 5) + ((i >> 6) << 17);
}
static inline uint32_t zox_blocked_y_term(int32_t size, int32_t y) {
  const uint32_t i = (uint32_t)y, bricks = size < 128 ? 1 : (uint32_t)size / 64;
  return ((i & 3) << 2) + (((i >> 2) & 15) << 9) + (i >> 6) * bricks * 131072u;
}
static inline uint32_t zox_blocked_z_term(int32_t size, int32_t z) {
  const uint32_t i = (uint32_t)z, bricks = size < 128 ? 1 : (uint32_t)size / 64;
  return ((i & 1) << 4) + (((i >> 1) & 15) << 13) + (i >> 5) * bricks * bricks * 131072u;
}

/* Where voxel (x, y, z) lies in a blocked buffer of this size, a power of two from 64 on. */
static inline uint32_t zox_blocked_index(int32_t size, int32_t x, int32_t y, int32_t z) {
  return zox_blocked_x_term(x) + zox_blocked_y_term(size, y) + zox_blocked_z_term(size, z);
}

/* Packs `layers` layers of a plain array, `voxels` being voxel (0, 0) of the first of them, into the
 * layers from first_layer on of a blocked buffer. Threads may pack different layers of one buffer at the
 * same time. Elements of the padding are left alone: take the buffer from calloc. */
static inline void zox_blocked_pack_8U(const uint8_t* voxels, int32_t columns, int32_t rows, int32_t layers,
                                       ptrdiff_t row_stride, ptrdiff_t slice_stride, uint8_t* blocked,
                                       int32_t size, int32_t first_layer);
static inline void zox_blocked_pack_16S(const int16_t* voxels, int32_t columns, int32_t rows, int32_t layers,
                                        ptrdiff_t row_stride, ptrdiff_t slice_stride, int16_t* blocked,
                                        int32_t size, int32_t first_layer);

/* The way back: layers from first_layer on of a blocked buffer into a plain array. */
static inline void zox_blocked_unpack_8U(const uint8_t* blocked, int32_t size, int32_t first_layer,
                                         uint8_t* voxels, int32_t columns, int32_t rows, int32_t layers,
                                         ptrdiff_t row_stride, ptrdiff_t slice_stride);
static inline void zox_blocked_unpack_16S(const int16_t* blocked, int32_t size, int32_t first_layer,
                                          int16_t* voxels, int32_t columns, int32_t rows, int32_t layers,
                                          ptrdiff_t row_stride, ptrdiff_t slice_stride);

#define ZOX_DEFINE_PACKING(suffix, voxel)                                                                    \
  static inline void zox_blocked_pack_##suffix(const voxel* voxels, int32_t columns, int32_t rows,           \
                                               int32_t layers, ptrdiff_t row_stride, ptrdiff_t slice_stride, \
                                               voxel* blocked, int32_t size, int32_t first_layer) {          \
    int32_t x, y, z;                                                                                         \
    for (z = 0; z < layers; ++z)                                                                             \
      for (y = 0; y < rows; ++y) {                                                                           \
        const voxel* from = voxels + z * slice_stride + y * row_stride;                                      \
        voxel* to = blocked + (zox_blocked_y_term(size, y) + zox_blocked_z_term(size, first_layer + z));     \
        for (x = 0; x < columns; ++x) to[zox_blocked_x_term(x)] = from[x];                                   \
      }                                                                                                      \
  }                                                                                                          \
  static inline void zox_blocked_unpack_##suffix(                                                            \
      const voxel* blocked, int32_t size, int32_t first_layer, voxel* voxels, int32_t columns, int32_t rows, \
      int32_t layers, ptrdiff_t row_stride, ptrdiff_t slice_stride) {                                        \
    int32_t x, y, z;                                                                                         \
    for (z = 0; z < layers; ++z)                                                                             \
      for (y = 0; y < rows; ++y) {                                                                           \
        const voxel* from =                                                                                  \
            blocked + (zox_blocked_y_term(size, y) + zox_blocked_z_term(size, first_layer + z));             \
        voxel* to = voxels + z * slice_stride + y * row_stride;                                              \
        for (x = 0; x < columns; ++x) to[x] = from[zox_blocked_x_term(x)];                                   \
      }                                                                                                      \
  }

ZOX_DEFINE_PACKING(8U, uint8_t)
ZOX_DEFINE_PACKING(16S, int16_t)
#undef ZOX_DEFINE_PACKING

/*
 * ---- Slice stacks --------------------------------------------------------------------------------
 */

/* Points the fields slices, rowoffs and nslices of a volume at a plain array, without a copy. Fills
 * `slices`, layers + 1 entries of which the last repeats the one before it, as Trilinear operations want,
 * and `rowoffs`, one entry a row; the volume refers to both. Strides are in bytes here. The regions are
 * another matter: zox_stack_regions. */
static inline void zox_stack_fill(zox_Volume* volume, const void* voxels, int32_t rows, int32_t layers,
                                  ptrdiff_t row_bytes, ptrdiff_t slice_bytes, const void** slices,
                                  int32_t* rowoffs) {
  int32_t y, z;
  for (z = 0; z < layers; ++z) slices[z] = (const char*)voxels + z * slice_bytes;
  slices[layers] = slices[layers - 1];
  for (y = 0; y < rows; ++y) rowoffs[y] = (int32_t)(y * row_bytes);
  volume->slices = slices;
  volume->rowoffs = rowoffs;
  volume->nslices = layers;
}

/* Cuts a stack into regions of uniform spacing: positions[s], strictly ascending, is the z of slice s, in
 * any unit, which then is that of the rays' z too. A region goes on as long as each of its slices lies
 * within `tolerance` (same unit) of the straight line from its first to its last; an odd gap is a region
 * of its own. Fills regslice and regscale (up to layers - 1 entries, 1 at least) and regbounds (one entry
 * more), points the volume at them, sets nregions and returns it. One slice alone makes one region of
 * length 1. Returns 0, with nothing set, when layers is below 1 or positions do not ascend.
 *
 * Operations with fixed tables take at most ZOX_MAX_FIXED_REGIONS regions. */
static inline int32_t zox_stack_regions(zox_Volume* volume, const double* positions, int32_t layers,
                                        double tolerance, int32_t* regslice, double* regbounds,
                                        double* regscale) {
  int32_t first = 0, last, count = 0;
  if (layers < 1 || !(positions[0] - positions[0] == 0)) return 0;
  for (last = 1; last < layers; ++last)
    if (!(positions[last] > positions[last - 1]) || !(positions[last] - positions[0] < 1e300)) return 0;
  do {
    /* The slopes of all lines from the first slice that pass every slice so far within the tolerance. */
    double least = 0, most = 1e300, length = 1;
    int32_t steps = 1;
    for (last = first + 1; last < layers; ++last) {
      const double rise = positions[last] - positions[first], n = last - first;
      if (rise / n < least || rise / n > most) break;
      if ((rise - tolerance) / n > least) least = (rise - tolerance) / n;
      if ((rise + tolerance) / n < most) most = (rise + tolerance) / n;
      steps = last - first;
      length = rise;
    }
    regslice[count] = first;
    regbounds[count] = positions[first];
    regscale[count] = steps / length;
    first += steps;
    regbounds[++count] = first < layers ? positions[first] : positions[0] + 1;
  } while (first < layers - 1);
  volume->regslice = regslice;
  volume->regbounds = regbounds;
  volume->regscale = regscale;
  volume->nregions = count;
  return count;
}

/*
 * ---- Rays ----------------------------------------------------------------------------------------
 */

/* Where samples may lie: low <= coordinate <= high on every axis. Positions on the 2^-20 grid, in which
 * fixed-point operations count, hold for as many samples as there are. Others, and the z of stacks whose
 * slices are not one unit apart, drift by up to `drift` a sample, and stay clear of the border by that. */
typedef struct zox_SampleBox {
  double low[3], high[3];
  double drift_low[3], drift_high[3];
  int off_grid[3]; /* not 0: drifts even where start and step are on the grid */
} zox_SampleBox;

/* One unit of the grid, and what a sample may drift: a step is wrong by less than one and a half. */
#define ZOX_GRID (1.0 / 1048576)
#define ZOX_DRIFT (2 * ZOX_GRID)

/* Is a coordinate a whole number of grid units? */
static inline int zox_on_grid(double coordinate) {
  const double units = coordinate / ZOX_GRID;
  return units > -1e15 && units < 1e15 && units == (double)(int64_t)units;
}

/* For x, y and the z of bricks: Nearest rounds, so that half a voxel more belongs to the volume; Trilinear
 * reads the next voxel too, so that the last one is not reached. */
static inline void zox_box_axis(zox_SampleBox* box, int axis, int32_t voxels, int trilinear) {
  box->low[axis] = trilinear ? 0 : -0.5;
  box->high[axis] = (trilinear ? voxels - 1 : voxels - 0.5) - ZOX_GRID;
  box->drift_low[axis] = box->drift_high[axis] = ZOX_DRIFT;
  box->off_grid[axis] = 0;
}

/* For Blocked operations on a volume of so many voxels, which need not fill the bricks; trilinear: 0 for
 * Nearest operations, else for Trilinear ones. */
static inline zox_SampleBox zox_blocked_box(int32_t columns, int32_t rows, int32_t layers, int trilinear) {
  zox_SampleBox box;
  zox_box_axis(&box, 0, columns, trilinear);
  zox_box_axis(&box, 1, rows, trilinear);
  zox_box_axis(&box, 2, layers, trilinear);
  return box;
}

/* For General operations on a stack whose fields are filled and whose slices have so many columns and
 * rows. z lies between the first and the last boundary, for Trilinear below the last. The limits of
 * coordinates (ZOX_MAX_GENERAL_...) are the caller's to keep. */
static inline zox_SampleBox zox_stack_box(const zox_Volume* volume, int32_t columns, int32_t rows,
                                          int trilinear) {
  zox_SampleBox box;
  const int32_t last = volume->nregions - 1;
  const double below = volume->regscale[0], above = volume->regscale[last];
  zox_box_axis(&box, 0, columns, trilinear);
  zox_box_axis(&box, 1, rows, trilinear);
  box.low[2] = volume->regbounds[0];
  box.high[2] = volume->regbounds[last + 1];
  box.off_grid[2] =
      below != 1 || above != 1 || !zox_on_grid(volume->regbounds[0]) || !zox_on_grid(volume->regbounds[last]);
  /* Nearest rounds to a slice, and keeps to the last region where rounding has passed the boundary. */
  box.drift_low[2] = trilinear ? ZOX_DRIFT * (1 + 1 / below) : 0;
  box.drift_high[2] = trilinear ? ZOX_DRIFT * (1 + 1 / above) : 0;
  if (trilinear) box.high[2] -= ZOX_GRID * (1 + 1 / above);
  return box;
}

/* Keeps those of the samples *first .. *last that lie in the box on one axis, being clear of its ends by
 * the drift of so many samples. *last below *first: none. */
static inline void zox_clip_axis(const zox_SampleBox* box, int axis, double start, double step,
                                 double samples, double* first, double* last) {
  double low = box->low[axis], high = box->high[axis], enter, leave;
  if (box->off_grid[axis] || !zox_on_grid(start) || !zox_on_grid(step)) {
    low += samples * box->drift_low[axis];
    high -= samples * box->drift_high[axis];
  }
  if (step == 0) {
    if (!(start >= low && start <= high)) *last = -1;
    return;
  }
  if (!(low <= high && step - step == 0)) {
    *last = -1;
    return;
  }
  enter = ((step > 0 ? low : high) - start) / step;
  leave = ((step > 0 ? high : low) - start) / step;
  /* Also where the start is no number. */
  if (!(enter <= *last && leave >= *first)) {
    *last = -1;
    return;
  }
  /* The least whole number from `enter` on, the greatest up to `leave`; the quotients may be rounded. */
  if (enter > *first) *first = (double)(int64_t)enter;
  if (leave < *last) *last = (double)(int64_t)leave;
  if (*first <= *last && !(start + *first * step >= low && start + *first * step <= high)) ++*first;
  if (*first <= *last && !(start + *last * step >= low && start + *last * step <= high)) --*last;
}

/* Of the samples start + k * step, k = 0 .. nsamples - 1, those that lie in the box, in whatever General
 * or Blocked operation the box was made for: returns their number and sets *first to the first of them
 * (0 when there are none). Cast them from start + *first * step. Coordinates that are not finite give
 * none. */
static inline int32_t zox_clip(const zox_SampleBox* box, const double start[3], const double step[3],
                               int32_t nsamples, int32_t* first) {
  double begin = 0, end = nsamples - 1.0;
  int pass, axis;
  /* Without drift first, since only the samples that are taken drift. */
  for (pass = 0; pass < 2; ++pass) {
    const double samples = pass == 0 ? 0 : end - begin + 5;
    for (axis = 0; axis < 3 && begin <= end; ++axis)
      zox_clip_axis(box, axis, start[axis], step[axis], samples, &begin, &end);
  }
  *first = begin <= end ? (int32_t)begin : 0;
  return begin <= end ? (int32_t)(end - begin) + 1 : 0;
}

#endif /* ZOX_VOLUME_LAYOUT_H */
