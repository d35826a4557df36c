/*
 * ZOX Volume: exact resampling of scalar volumes along batches of rays.
 *
 * A caller describes a volume (zox_Volume) and a batch of rays with one output plane per sample
 * index (zox_Rays); a RayCast operation writes sample k of ray r to planes[k][r]; a FindMax
 * operation reduces the planes to one value per ray; the WindowLevel operation turns signed 16-bit
 * values into display bytes. Header for C11 and later and for C++17 and later; x86-64 Linux.
 *
 * What holds for every operation
 *
 * Ownership     The caller owns every record, array, plane and mask. Operations write to the output
 *               they are given and to nothing else, keep no pointer and no state after the call.
 * Checks        None but in WindowLevel: null pointers, counts, ranges and limits are the caller's
 *               duty. What is promised below holds for arguments that keep that duty.
 * Results       The same bits on every processor, whichever instruction set runs, for every number
 *               of threads. Every double-precision operation is rounded on its own (no fused
 *               multiply-add, no wider precision), in the order stated. The floating-point control
 *               word must stand as the system sets it: rounding to nearest, denormals kept; which
 *               exceptions are masked does not matter.
 * Exceptions    No floating-point exception is raised, nor a flag left, but those that the stated
 *               arithmetic raises for the given rays, and inexact: NaN and numbers that do not fit
 *               32 bits raise invalid where they are converted. The start of a ray without samples
 *               can do so only where a parallel operation compares starts.
 * Threads       Operations run to completion on the calling thread, create no threads and take no
 *               locks. But for the thread-count setting there is no shared state: any operations
 *               may run at the same time on one volume if their outputs do not overlap.
 * Aliasing      Output must not overlap anything that the operation reads, nor itself (two planes
 *               sharing bytes). WindowLevel alone allows overlap; see there.
 * Memory        Only the General operations allocate, only beyond the limits below, through
 *               __zox_Malloc; every block is released before the call returns.
 * Stack         At most ZOX_STACK_GENERAL_NEAREST bytes for General Nearest (and Bit) operations,
 *               ZOX_STACK_GENERAL_TRILINEAR for General Trilinear ones, ZOX_STACK_OTHER for every
 *               other operation, where the library is compiled with optimisation. Give threads that
 *               cast General volumes a stack to match.
 * Status        An int, ZOX_STS_..., where a function returns int. Each says which it can return.
 * Names         Every operation is exported a second time with two leading underscores; those
 *               names are declared in zox_volume_names.h.
 *
 * Notation      trunc(v): v converted to a signed 32-bit integer toward zero; a value that does
 *               not fit (or NaN) becomes -2147483648. round(v): trunc(v + 0.5), for negative v
 *               too. >> on a signed value is an arithmetic shift, that is a floor. Fixed-point sums
 *               wrap in 32 bits.
 */
#ifndef ZOX_VOLUME_H
#define ZOX_VOLUME_H

#include <stddef.h>
#include <stdint.h>

/* The version of the kernels, which zoxid and zox_GetVersion carry. The releases that they come in
 * count on by themselves. */
#define ZOX_VOLUME_VERSION 1100

#ifdef __cplusplus
#define ZOX_VOLUME_ASSERT(condition, text) static_assert(condition, text)
extern "C" {
#else
#define ZOX_VOLUME_ASSERT(condition, text) _Static_assert(condition, text)
#endif

/* Status codes. No other value is ever returned. */
enum {
  ZOX_STS_NO_ERROR = 0,  /* done; also when there was nothing to do */
  ZOX_STS_BAD_PARAM = 1, /* WindowLevel only: the window or the output range is invalid */
  ZOX_STS_NO_MEMORY = 2, /* General casters only: scratch could not be had, nothing was written */
  ZOX_STS_BAD_DATA = 3   /* for callers; no operation returns it */
};

/* Limits. No operation checks them; passing one is outside the contract. */
enum {
  /* Blocked volumes: largest size, hence x and y below 2048. */
  ZOX_MAX_BLOCKED_SIZE = 2048,
  /* Blocked Divergent Nearest and Blocked Parallel Trilinear 8U, whose positions are fixed point: z
   * stays below this too (in Nearest with the 0.5 of rounding added), and so do steps in magnitude. */
  ZOX_MAX_BLOCKED_FIXED_COORDINATE = 2048,
  /* General operations: rays in a batch. Blocked and FindMax operations have no limit. */
  ZOX_MAX_GENERAL_RAYS = 64,
  /* The largest nslices and nregions of all Bit operations, and of the parallel Nearest ones
   * wherever they do not take the one-region path: their tables do not grow. The other General
   * operations allocate beyond these numbers. */
  ZOX_MAX_FIXED_SLICES = 512,
  ZOX_MAX_FIXED_REGIONS = 511,
  /* General operations that keep slice lists allocate when a ray has more samples than this. */
  ZOX_MAX_STACK_SAMPLES = 512,
  /* The largest nsamples of the General Nearest (and Bit) and the General Trilinear operations: the
   * scratch is sized in 32-bit arithmetic. Where memory is short, status 2 comes earlier. */
  ZOX_MAX_GENERAL_NEAREST_SAMPLES = 4194303,
  ZOX_MAX_GENERAL_TRILINEAR_SAMPLES = 2097151,
  /* General operations: x, y, z, the boundaries, and the distance of a sample from the first boundary
   * of its region, in z and in slices, stay below this in magnitude; in Nearest (and Bit) x, y and
   * slices do so with the 0.5 of rounding added. Hence at most so many columns, rows and slices in a
   * region can be reached. So do steps, in z and in slices too, of rays with more than one sample.
   * What does not fit is still the same on every processor: -2147483648 where it is converted,
   * wrapped where it is a sum or a difference. A sample may then lie in a slice that the stack lacks
   * and stay unwritten. */
  ZOX_MAX_GENERAL_NEAREST_COORDINATE = 1024,
  ZOX_MAX_GENERAL_TRILINEAR_COORDINATE = 2048
};

/* Upper bounds of the stack that an operation takes, in bytes. */
enum {
  ZOX_STACK_GENERAL_NEAREST = 320 * 1024,
  ZOX_STACK_GENERAL_TRILINEAR = 576 * 1024,
  ZOX_STACK_OTHER = 16 * 1024
};

/*
 * A volume, in one of two storage forms; an operation's name says which it takes. Voxel (i, j, l)
 * is centred at the point (i, j, l): coordinates count voxels. Voxels are uint8_t for operations in
 * 8U, int16_t for 16S, single bits for Bit_8U. Only read, never kept.
 *
 * Blocked form (fields data and size; the others are not read): one buffer of bricks of 64 x 64 x 32
 * voxels. With B = 1 for size below 128, else size / 64 rounded down to a power of two, the
 * element of voxel (x, y, z) has the index
 *     bits 0-1    x & 3            bits 5-8    (x >> 2) & 15
 *     bits 2-3    y & 3            bits 9-12   (y >> 2) & 15
 *     bit  4      z & 1            bits 13-16  (z >> 1) & 15
 *     bits 17 up  (x >> 6) + B * ((y >> 6) + B * (z >> 5))
 * in elements, not bytes. A volume of D voxel layers takes B * B * ceil(D / 32) * 131072 elements;
 * the record carries no D. Valid: 0 <= x, y < 64 * B, and 0 <= z as far as the buffer reaches and
 * the index stays below 2^32 (z below 1024 at B = 32).
 *
 * Slice-stack form (General operations; size is not read): slices at addresses of their own, voxel
 * (x, y) of slice s at byte slices[s] + rowoffs[y] + x (8U), + 2 * x (16S), + (x >> 3) (Bit).
 * rowoffs[y] + x, in Bit rowoffs[y] + (x >> 3), must fit 32 bits. The z axis is cut into regions of
 * uniform slice spacing: z in region j lies at slice position
 *     regslice[j] + (z - regbounds[j]) * regscale[j]
 * x and y are never scaled. In a Bit row, column x is bit 7 - (x - (x >> 3)), modulo 32, of its byte,
 * and 0 where that is above 7: columns 0 to 7 are the first byte, most significant bit first, column
 * 8 is bit 0 of the second byte, columns 9 to 35 read 0. This is intended: it is x - (x >> 3), not
 * x & 7, so a mask wider than nine columns cannot be a plain packed bitmap.
 */
typedef struct zox_Volume {
  union {
    /* Blocked: the element buffer, uint8_t or int16_t in the layout above. */
    const void* data;
    /* Slice stack: nslices base addresses; for Trilinear operations nslices + 1 readable entries, the
     * last being followed only for samples in slice nslices - 1. Only slices that samples fall in
     * are read (in Trilinear also the slice after each). */
    const void* const* slices;
  };
  /* Blocked: edge of the grid in x and y, in voxels: a power of two from 64 to
   * ZOX_MAX_BLOCKED_SIZE. Any other positive size acts as the next lower of these (below 64: as
   * 64). Must not be negative. */
  int32_t size;
  /* Slice stack: offset of row y from the slice's base, in bytes, of any sign and in any order; one
   * entry per row. Entries from the lowest to the highest row that samples of the call touch may be
   * read, no others. int16_t voxels must be aligned to 2 bytes. */
  const int32_t* rowoffs;
  /* Slice stack: number of slices. In operations with slice lists, a sample whose slice is outside
   * 0 .. nslices - 1 is left unwritten. The one-region path (see General parallel) reads no
   * nslices. */
  int32_t nslices;
  /* Slice stack: number of regions, at least 1. */
  int32_t nregions;
  /* Slice stack: nregions numbers, the first slice of each region. With one region it must be 0 for
   * all operations to agree, since the one-region path does not read it. */
  const int32_t* regslice;
  /* Slice stack: nregions + 1 ascending z coordinates; region j lies between boundary j and
   * boundary j + 1. The z of every sample lies within the first and the last. */
  const double* regbounds;
  /* Slice stack: nregions factors, slices per unit of z (1 / slice spacing). */
  const double* regscale;
} zox_Volume;

ZOX_VOLUME_ASSERT(sizeof(zox_Volume) == 56, "size of zox_Volume");
ZOX_VOLUME_ASSERT(offsetof(zox_Volume, data) == 0, "offset of data");
ZOX_VOLUME_ASSERT(offsetof(zox_Volume, slices) == 0, "offset of slices");
ZOX_VOLUME_ASSERT(offsetof(zox_Volume, size) == 8, "offset of size");
ZOX_VOLUME_ASSERT(offsetof(zox_Volume, rowoffs) == 16, "offset of rowoffs");
ZOX_VOLUME_ASSERT(offsetof(zox_Volume, nslices) == 24, "offset of nslices");
ZOX_VOLUME_ASSERT(offsetof(zox_Volume, nregions) == 28, "offset of nregions");
ZOX_VOLUME_ASSERT(offsetof(zox_Volume, regslice) == 32, "offset of regslice");
ZOX_VOLUME_ASSERT(offsetof(zox_Volume, regbounds) == 40, "offset of regbounds");
ZOX_VOLUME_ASSERT(offsetof(zox_Volume, regscale) == 48, "offset of regscale");

/*
 * A batch of rays and the planes that receive their samples. RayCast operations read the rays and
 * write the planes; FindMax operations read planes, nrays and nsamples. Below, R is nrays and N_r is
 * nsamples[r]. Elements of planes at or beyond R, and of ray r in planes at or beyond N_r, are never
 * touched.
 *
 * Planes a power of two apart (4096 bytes and multiples above all) fall into the same few lines of
 * the cache, and an operation that walks many planes slows down several times. Pad the distance
 * from one plane to the next: for example an odd number of 64-byte lines.
 *
 * Declare the pointer arrays with the types below, whatever they point into, and neither C nor C++
 * needs a cast:
 *     uint8_t image[DEPTH][64];     void* planes[DEPTH];         planes[k] = image[k];
 *     double start[64][3];          const double* starts[64];    starts[r] = start[r];
 */
typedef struct zox_Rays {
  /* planes[k]: array of at least R elements, one per ray: uint8_t for operations in 8U (Bit_8U too),
   * int16_t, aligned to 2 bytes, for 16S. At least as many planes as the largest N_r. */
  void* const* planes;
  /* Number of rays R. With R <= 0 nothing is written (one exception: see FindMax); what is still
   * read then, each family says below. */
  int32_t nrays;
  /* starts[r]: 3 doubles, x, y, z of sample 0, in voxels; z of a slice stack in the unit of
   * regbounds. */
  const double* const* starts;
  /* steps[r]: 3 doubles, the displacement from one sample to the next. Parallel operations read
   * steps[0] only and use it for every ray. */
  const double* const* steps;
  /* nsamples[r]: number of samples N_r, up to 2147483647 but where ZOX_MAX_... says less. 0 writes
   * nothing for that ray. Negative counts are as 0 in divergent, parallel Trilinear General and
   * FindMax operations, and not allowed in others. */
  const int32_t* nsamples;
} zox_Rays;

ZOX_VOLUME_ASSERT(sizeof(zox_Rays) == 40, "size of zox_Rays");
ZOX_VOLUME_ASSERT(offsetof(zox_Rays, planes) == 0, "offset of planes");
ZOX_VOLUME_ASSERT(offsetof(zox_Rays, nrays) == 8, "offset of nrays");
ZOX_VOLUME_ASSERT(offsetof(zox_Rays, starts) == 16, "offset of starts");
ZOX_VOLUME_ASSERT(offsetof(zox_Rays, steps) == 24, "offset of steps");
ZOX_VOLUME_ASSERT(offsetof(zox_Rays, nsamples) == 32, "offset of nsamples");

/* ---- Frame ---------------------------------------------------------------------------------- */

/* The thread-count setting, -1 until zox_SetNumThreads stores another. Nothing else reads it. */
extern int32_t zox_nthreads;

/* "@(#)ZOX:1100:20240723:linux-x8664:svn:" and its NUL: tag, version, build date, platform and
 * source control, separated by colons. */
extern const char zoxid[39];

/* English text for a status code, "Unknown Status" for any other number. Static, never null. */
const char* zox_GetStringStatus(int status);

/* The text of zoxid without its first four characters, in bytes of its own. Static, never null. */
const char* zox_GetVersion(void);

/* Stores zox_nthreads to *count, which must not be null. Returns ZOX_STS_NO_ERROR. */
int zox_GetNumThreads(int* count);

/* Stores any count, 0 and negative ones too, to zox_nthreads for the life of the process. No
 * operation consults it. Plain store: of concurrent calls the last one wins. Returns
 * ZOX_STS_NO_ERROR. */
int zox_SetNumThreads(int count);

/* A block of at least size bytes at an address divisible by 64, to be released with zox_Free. Asks
 * malloc for size + 72 bytes and keeps malloc's pointer in the 8 bytes below the block. Null when
 * size is below 1 or above 2147483583, or when malloc fails. As thread-safe as malloc. */
void* zox_Malloc(int size);

/* Releases a block of zox_Malloc; null is ignored. Blocks from elsewhere must not be passed. */
void zox_Free(void* block);

/* The address rounded up to a multiple of alignment, a power of two (unchecked). The result may
 * lie up to alignment - 1 bytes further. Nothing is read or written; alignment 0 gives null. */
void* zox_AlignPointer(void* pointer, int alignment);

/*
 * ---- Blocked volumes ----------------------------------------------------------------------------
 *
 * Read: volume->data, volume->size, and of the batch all that its description says. Written: sample
 * k of ray r, for k = 0 .. N_r - 1, to planes[k][r]. Any number of rays. No memory is allocated, the
 * status is always ZOX_STS_NO_ERROR. R <= 0: returns at once, reading nothing of the batch but R.
 *
 * Nearest copies the voxel unchanged. Trilinear reads the voxel at floor(position) and its
 * neighbours at + 1 along every axis, also where the weight is zero: all eight must be valid.
 * No sample may leave the volume, nor z the fixed point where positions are such. In Nearest a
 * coordinate p picks voxel floor(p + 0.5), so -0.5 <= p < 64 * B - 0.5 for x and y; in Trilinear
 * 0 <= p < 64 * B - 1.
 */

/*
 * Divergent Nearest: fixed point with 20 fraction bits. Per axis P = trunc((start + 0.5) * 2^20) and
 * Q = trunc(step * 2^20); sample k is the voxel at (P + k * Q) >> 20. The step loses what lies below
 * 2^-20 of a voxel once, so the position drifts by up to that much per sample.
 */
int zox_Volume_RayCast_Blocked_Divergent_Nearest_8U(const zox_Volume* volume, const zox_Rays* rays);
int zox_Volume_RayCast_Blocked_Divergent_Nearest_16S(const zox_Volume* volume, const zox_Rays* rays);

/*
 * Divergent Trilinear: positions in double, accumulated: position 0 is the start, position k + 1 is
 * position k + step. Per axis i = trunc(position), f = position - i, g = 1 - f. The value is the
 * sum, from left to right, of the eight products (V(a,b,c) is the voxel at + a, + b, + c)
 *     ((gy*gx)*gz)*V(0,0,0) + ((gy*fx)*gz)*V(1,0,0) + ((gx*fy)*gz)*V(0,1,0) + ((gy*gx)*fz)*V(0,0,1)
 *   + ((fx*fy)*gz)*V(1,1,0) + ((gy*fx)*fz)*V(1,0,1) + ((gx*fy)*fz)*V(0,1,1) + ((fx*fy)*fz)*V(1,1,1)
 * truncated toward zero, neither rounded to nearest nor clamped: -6.5 becomes -6, and a constant
 * volume of 255 can give 254 where the weights sum to a little less than one.
 */
int zox_Volume_RayCast_Blocked_Divergent_Trilinear_8U(const zox_Volume* volume, const zox_Rays* rays);
int zox_Volume_RayCast_Blocked_Divergent_Trilinear_16S(const zox_Volume* volume, const zox_Rays* rays);

/*
 * Parallel: every N_r >= 0; D is steps[0]. A batch of up to 64 rays is walked in one of two orders,
 * which differ in how a position is computed (and so, rarely, in a value):
 *   sample by sample when Ms > Mr, where
 *     Ms = max(0, |Dx| / w, |Dy| / 6, |Dz|), w being 12 for 8U and 6 for 16S,
 *     Mr = max(0, mean x / w, mean y / 6, mean z), the means being those of |O_r - O_(r-1)| over
 *          r = 1 .. R - 1 per axis, summed in ray order (0 when R is 1), rays without samples too:
 *          their starts matter, so give them one near the others; a mean that is NaN is passed over,
 *     O_r = the offset of start r from start 0, as below;
 *   ray by ray otherwise, and always for more than 64 rays.
 */

/*
 * Parallel Nearest: positions in double. O_r = start r - start 0. Ray by ray: start + 0.5, to which
 * D is added after every sample. Sample by sample: O_r + b with b = start 0 + 0.5, to which D is
 * added after every sample. The voxel is trunc of the position. These are not the fixed-point
 * positions of the divergent operations: the two can pick neighbouring voxels.
 */
int zox_Volume_RayCast_Blocked_Parallel_Nearest_8U(const zox_Volume* volume, const zox_Rays* rays);
int zox_Volume_RayCast_Blocked_Parallel_Nearest_16S(const zox_Volume* volume, const zox_Rays* rays);

/*
 * Parallel Trilinear 8U: integers throughout, 20 fraction bits. Q = trunc(D * 2^20). Ray by ray:
 * trunc(start * 2^20), plus Q after every sample. Sample by sample: B + O_r with
 * B = trunc(start 0 * 2^20), plus Q after every sample, and O_r = trunc(start r * 2^20 - B), the
 * difference formed in double; in the measure Mr offsets count in voxels, |difference| * 2^-20, where
 * difference and absolute value are 32-bit integers, so that -2147483648 stays negative. The
 * weights are fx = the 20 fraction bits of x, fy and fz = the upper 10 fraction bits of y and z. With
 * signed 32-bit arithmetic:
 *     row(b,c)  = (V(0,b,c) << 20) + (V(1,b,c) - V(0,b,c)) * fx
 *     layer(c)  = row(0,c) + ((row(1,c) - row(0,c)) >> 10) * fy
 *     value     = (layer(0) + ((layer(1) - layer(0)) >> 10) * fz) >> 20
 * stored as its low 8 bits. Shifts floor, so over nearly black voxels the value can become -1,
 * stored as 255.
 */
int zox_Volume_RayCast_Blocked_Parallel_Trilinear_8U(const zox_Volume* volume, const zox_Rays* rays);

/*
 * Parallel Trilinear 16S: positions in double as in Parallel Nearest, without the 0.5; the value is
 * that of Divergent Trilinear.
 */
int zox_Volume_RayCast_Blocked_Parallel_Trilinear_16S(const zox_Volume* volume, const zox_Rays* rays);

/*
 * ---- General volumes (slice stacks) --------------------------------------------------------------
 *
 * Read: slices, rowoffs, nslices, nregions, regslice, regbounds, regscale of the volume, and of the
 * batch all that its description says. Written: sample k of ray r, for k = 0 .. N_r - 1, to
 * planes[k][r]. At most ZOX_MAX_GENERAL_RAYS rays.
 *
 * The operations (all but the one-region path of the parallel Nearest ones) sort the samples of the
 * batch by slice and then visit the slices once each in ascending order, whichever way the rays
 * cross the stack: a stack may lie in a mapped file. Trilinear reads slices s and s + 1 while it is
 * at s. Within the call no slice is touched again after the visit has passed it.
 *
 * Scratch stands on the stack up to ZOX_MAX_FIXED_REGIONS, ZOX_MAX_FIXED_SLICES and
 * ZOX_MAX_STACK_SAMPLES (the largest N_r) and is taken from __zox_Malloc beyond, in this order:
 *     4 * (nregions + 1) bytes, 4 * nslices bytes, and
 *     512 bytes (Nearest and Bit) or 1024 bytes (Trilinear) times the largest N_r.
 * Parallel Nearest and both Bit operations take only the last of these from the heap.
 * Status: ZOX_STS_NO_ERROR, or ZOX_STS_NO_MEMORY when a block could not be had; the others are
 * then released and no plane has been written.
 *
 * Positions are 32-bit fixed point: 21 fraction bits in Nearest and Bit, 20 in Trilinear. Below,
 * F is 2^21 or 2^20, and t(v) = trunc(v * F), r(v) = round(v * F):
 *
 *                                        start x, y   step x, y   z and its step   boundaries
 *   Divergent Nearest 8U 16S, 1 region   t(v + 0.5)   r           t                t
 *   Divergent Nearest 8U 16S, more       t(v + 0.5)   t           t                t
 *   Divergent Nearest Bit                t(v + 0.5)   t           t                t
 *   Divergent Trilinear 8U               r            r           r                r
 *   Divergent Trilinear 16S              r            r           r                t
 *   Parallel Nearest 8U 16S Bit, lists   t(v + 0.5)   t           t                t
 *   Parallel Trilinear 8U 16S            r            r           r                r
 *
 * Each difference in this table is intended. x, y and z advance by their step after every sample.
 * The slice position P of a sample, counted from its region's first slice, starts as
 * trunc((z - bound[j]) * regscale[j]) and advances by trunc(zstep * regscale[j]), z, bound and zstep
 * being the fixed-point numbers; it is formed anew from z only where the region changes.
 *
 * Region: with nregions = 1 region 0 for every sample, also beyond its end. Otherwise a ray whose
 * fixed-point z step is 1 or more starts at region 0 and moves up while bound[j + 1] < z; any other
 * ray starts at the last region and moves down while z < bound[j]. A sample exactly on a boundary
 * thus stays in the lower region when rising and in the upper region when falling. A z that rounding
 * carries past the first or last boundary stays in the first or last region.
 *
 * Slice: Nearest regslice[j] + ((P + 2^20) >> 21), that is rounded half up; Trilinear
 * regslice[j] + (P >> 20), the fraction of P being the z weight. Column and row: x and y >> 21
 * (Nearest; kept in 16 bits and read back unsigned) or >> 20 (Trilinear).
 *
 * Samples must lie inside the volume: in Nearest the voxel, in Trilinear also its neighbours at + 1
 * in x, y and slice, which are read whatever their weight.
 */

/*
 * Divergent Nearest copies the voxel unchanged; Bit writes the bit as 0 or 1. nrays <= 0: nothing is
 * written, but nsamples[0] is read and sizes the scratch, so status 2 remains possible.
 */
int zox_Volume_RayCast_General_Divergent_Nearest_8U(const zox_Volume* volume, const zox_Rays* rays);
int zox_Volume_RayCast_General_Divergent_Nearest_16S(const zox_Volume* volume, const zox_Rays* rays);
int zox_Volume_RayCast_General_Divergent_Nearest_Bit_8U(const zox_Volume* volume, const zox_Rays* rays);

/*
 * Divergent Trilinear 8U: the value of Blocked Parallel Trilinear 8U, with fx = the 20 fraction bits
 * of x, fy and fz = the upper 10 fraction bits of y and P. 16S: in double, with all 20 bits of each
 * weight (f = bits * 2^-20), interpolating along x, then y, then z as a + (b - a) * f, truncated
 * toward zero, stored as its low 16 bits. slices holds nslices + 1 readable entries. nrays <= 0: as in
 * Divergent Nearest.
 */
int zox_Volume_RayCast_General_Divergent_Trilinear_8U(const zox_Volume* volume, const zox_Rays* rays);
int zox_Volume_RayCast_General_Divergent_Trilinear_16S(const zox_Volume* volume, const zox_Rays* rays);

/*
 * Parallel Nearest: every N_r >= 0; nrays <= 0 returns ZOX_STS_NO_ERROR at once, reading nothing
 * else. Takes the one-region path when nregions is 1 and (regbounds[1] - regbounds[0]) * 0.2 is
 * strictly greater than the largest |start z - start z of ray 0|, rays without samples counting too;
 * otherwise slice lists as above. The two can pick neighbouring voxels.
 *
 * One-region path: the position of ray 0 is kept in double and the step added after every sample,
 *     X = x0, then += dx;   Y = y0, then += dy;
 *     S = regscale[0] * (z0 - regbounds[0]), then += dz * regscale[0];
 * and the voxel of ray i is, per axis, (o_i + trunc(position * 2^21)) >> 21 with
 *     o_i = trunc(d * 2^21) + 2^20, d being xi - x0, yi - y0, (zi - z0) * regscale[0].
 * X, Y and S stay below ZOX_MAX_GENERAL_NEAREST_COORDINATE in magnitude for as long as any ray has
 * samples, also where those of ray 0 have ended. Where the position of ray 0 is negative, trunc rounds
 * it up: a sample less than 2^-21 below the end of its voxel, in slices too, then falls into the
 * next one. Clip rays to 2^-21 short of the volume's upper ends (the last voxel's index + 0.5).
 * It reads neither regslice nor nslices, allocates nothing, does not order its reads by slice and
 * always succeeds.
 */
int zox_Volume_RayCast_General_Parallel_Nearest_8U(const zox_Volume* volume, const zox_Rays* rays);
int zox_Volume_RayCast_General_Parallel_Nearest_16S(const zox_Volume* volume, const zox_Rays* rays);
int zox_Volume_RayCast_General_Parallel_Nearest_Bit_8U(const zox_Volume* volume, const zox_Rays* rays);

/*
 * Parallel Trilinear: always with slice lists; the values are those of Divergent Trilinear 8U and
 * 16S. slices holds nslices + 1 readable entries. nrays <= 0: nothing is written, but steps[0]
 * and nsamples[0] are read, and nsamples[0] sizes the scratch, so status 2 remains possible.
 */
int zox_Volume_RayCast_General_Parallel_Trilinear_8U(const zox_Volume* volume, const zox_Rays* rays);
int zox_Volume_RayCast_General_Parallel_Trilinear_16S(const zox_Volume* volume, const zox_Rays* rays);

/*
 * ---- Maximum -------------------------------------------------------------------------------------
 *
 * maxima[r] = the largest of planes[k][r] over k = 0 .. N_r - 1, in the masked operations over those
 * k that the mask selects; 0 (8U) or -32768 (16S) where there is none. Read: planes, nrays, nsamples
 * and the mask; unselected samples may be read too, so their planes must exist. Written:
 * maxima[0 .. R - 1]. Any number of rays. No memory is allocated, the status is always
 * ZOX_STS_NO_ERROR.
 *
 * R = 0 and even negative R: nothing is read or written. Odd negative R: ray 0 is processed and
 * maxima[0] written, so the arrays must hold it.
 */
int zox_Volume_FindMax_8U(const zox_Rays* rays, uint8_t* maxima);
int zox_Volume_FindMax_16S(const zox_Rays* rays, int16_t* maxima);

/*
 * Bit mask: sample index k is selected when bit 7 - k % 8 of mask[k / 8] is set (most significant bit
 * first), the same for every ray. At least ceil(largest N_r / 8) bytes.
 */
int zox_Volume_FindMaxBMask_8U(const zox_Rays* rays, const uint8_t* mask, uint8_t* maxima);
int zox_Volume_FindMaxBMask_16S(const zox_Rays* rays, const uint8_t* mask, int16_t* maxima);

/*
 * Byte mask: sample index k is selected when mask[k] is greater than the low 8 bits of threshold,
 * both unsigned; 255 and -1 select nothing, 256 is as 0. At least as many bytes as the largest N_r.
 */
int zox_Volume_FindMaxCMask_8U(const zox_Rays* rays, const uint8_t* mask, int threshold, uint8_t* maxima);
int zox_Volume_FindMaxCMask_16S(const zox_Rays* rays, const uint8_t* mask, int threshold, int16_t* maxima);

/*
 * ---- Display -------------------------------------------------------------------------------------
 *
 * Maps len values of src to bytes: outmin below the window, outmax above it, linear inside. Of center
 * and width the low 16 bits count, read as signed; of outmin and outmax the low 8 bits, unsigned.
 *     lo = ((2 * center - width) >> 1) + 1        slope  = (outmax - outmin) / width
 *     hi = ((2 * center + width) >> 1) - 1        offset = outmin - (center - 0.5 * width) * slope
 *     dst[i] = outmin where src[i] < lo, outmax where src[i] > hi,
 *              otherwise src[i] * slope + offset in double, truncated toward zero.
 * Returns ZOX_STS_BAD_PARAM, writing nothing and whatever len is, unless width > 0,
 * outmin <= outmax, -32768 <= lo <= hi <= 32767 (so width is at least 2). Otherwise
 * ZOX_STS_NO_ERROR; len <= 0 then reads and writes nothing.
 *
 * src and dst may overlap: values are then converted one after the other from the first, so dst equal
 * to src converts in place.
 */
int zox_Volume_WindowLevel_16S_8U(const int16_t* src, uint8_t* dst, int len, int center, int width,
                                  int outmin, int outmax);

#ifdef __cplusplus
}
#endif

#undef ZOX_VOLUME_ASSERT

#endif /* ZOX_VOLUME_H */
