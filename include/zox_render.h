/*
 * ZOX Render: whole pictures of scalar volumes, exact in every pixel.
 *
 * A caller describes an array of voxels (zox_render_array), makes a volume of it once
 * (zox_render_volume_create), describes what is to be seen (zox_render_view) and renders as many
 * pictures as wanted (zox_render). C11 and later, C++17 and later; x86-64 Linux; link with
 * libzox_render.so, which stands on libzox_volume.so.
 *
 * What holds for every function
 *
 * Units         Lengths are millimetres in the patient's frame: x grows to the patient's left, y to the
 *               back, z to the head. Values are the caller's: stored voxel * slope + intercept.
 * Records       Every record begins with its size, set by its *_init function, so that programs
 *               compiled with an older header go on working. Fields left as *_init sets them have
 *               the default that is told with each.
 * Checks        Everything is checked. A function that fails returns a status other than
 *               ZOX_RENDER_OK, and zox_render_last_error() tells why in one sentence. Outputs are
 *               then unspecified, nothing is leaked, and no other picture is affected.
 * Ownership     The caller owns records, arrays and outputs. A volume keeps its own copy of the
 *               voxels (bricks) or refers to the caller's (stack without a copy): see
 *               zox_render_volume_create. Records and positions are copied.
 * Results       The same bytes on every processor, for every number of threads, with and without
 *               skipping, on every call. Every sample lies within the smallest and the largest of
 *               the voxels that it is interpolated from.
 * Threads       All functions may be called at the same time from several threads; one volume may be
 *               rendered by many at once. Only the destroy functions need that nobody uses the object.
 *               Work is spread over a pool of the library's, or over the caller's threads by a callback.
 */
#ifndef ZOX_RENDER_H
#define ZOX_RENDER_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Statuses. */
enum {
  ZOX_RENDER_OK = 0,
  ZOX_RENDER_BAD_ARGUMENT = 1, /* a record or an argument is not what its description asks for */
  ZOX_RENDER_NO_MEMORY = 2,    /* memory could not be had; the sentence names the bytes wanted */
  ZOX_RENDER_CANCELLED = 3,    /* the progress callback asked for it */
  /* The view holds no sample at all (a slab outside of the volume). The planes hold a picture of nothing. */
  ZOX_RENDER_EMPTY = 4,
  ZOX_RENDER_FAILED = 5 /* anything else, a thread that could not be started among it */
};

/* One or two words for a status, static, never null. */
const char* zox_render_status_text(int status);

/* Why the last function that failed on the calling thread did: one sentence, valid until the next
 * call of a function of this library on this thread. Never null; "" when none has failed. */
const char* zox_render_last_error(void);

/* The release, such as "11.1.0". Static, never null. */
const char* zox_render_version(void);

/*
 * ---- Threads, progress, cancelling ---------------------------------------------------------------
 */

/* Worker threads that many calls share, also at the same time. */
typedef struct zox_render_pool zox_render_pool;

/* threads: 1 to 1024 in all, the calling thread counted; 0: one for each processor that the process
 * may use. Destroying waits for nothing: no call may be using the pool. Null is ignored. */
int zox_render_pool_create(int threads, zox_render_pool** pool);
void zox_render_pool_destroy(zox_render_pool* pool);

/* How a call spreads its work and tells of it. All zero: on the calling thread alone, in silence. */
typedef struct zox_render_run {
  uint32_t record_size;
  /* The library's pool, or null. */
  zox_render_pool* pool;
  /* Or the caller's threads: must call task(context, i) once for every i of 0 .. count - 1, on any
   * threads, and return when all have returned. Not both. */
  void (*parallel_for)(void* user, int count, void (*task)(void* context, int i), void* context);
  void* parallel_for_user;
  /* Called now and then with the share done, 0 to 1, never from two threads at once, always from the
   * calling thread; a result other than 0 cancels the call. */
  int (*progress)(void* user, double share);
  void* progress_user;
} zox_render_run;

/* Sets record_size and gives every field its default. */
void zox_render_run_init(zox_render_run* run);

/*
 * ---- Volumes -------------------------------------------------------------------------------------
 */

/* Types of voxels. */
enum {
  ZOX_RENDER_UINT8 = 1,
  ZOX_RENDER_INT16 = 2,
  ZOX_RENDER_UINT16 = 3,
  ZOX_RENDER_INT32 = 4,
  ZOX_RENDER_UINT32 = 5,
  ZOX_RENDER_FLOAT32 = 6, /* values that are not finite count as the lowest finite one */
  ZOX_RENDER_INT8 = 7,
  ZOX_RENDER_FLOAT64 = 8
};

/* An array of voxels, as it lies in memory. */
typedef struct zox_render_array {
  uint32_t record_size;
  int32_t type;    /* ZOX_RENDER_UINT8 ... */
  int32_t size[3]; /* columns, rows, slices: 1 to 2048 each, of a part too (see whole_size) */
  /* Voxel (0, 0, 0), and the bytes from a voxel to the next along each axis, of any sign; all 0:
   * packed, x fastest. */
  const void* data;
  int64_t strides[3];
  /* Instead of data: size[2] addresses of voxel (0, 0) of each slice; strides[2] is not read. */
  const void* const* slices;
  /* axes[a]: what one voxel along axis a means in millimetres. Any three vectors that are not
   * coplanar: skewed ones (a tilted gantry) and left-handed ones too. *_init: the unit vectors. */
  double axes[3][3];
  double origin[3]; /* the centre of voxel (0, 0, 0) (of a part: of the whole's) in millimetres */
  /* Uneven slices: size[2] positions, strictly ascending, in millimetres along axes[2] from voxel
   * (0, 0, 0); the length of axes[2] is then not read, only its direction. Null: even slices.
   * Samples are interpolated between the slices as they stand; nothing is resampled. */
  const double* positions;
  /* A value is stored voxel * slope + intercept. *_init: 1 and 0. slope must not be 0. */
  double slope, intercept;
  /* A part of a volume that is larger than memory or the limits: the size of the whole, where voxel
   * (0, 0, 0) of this array lies in it, and the first and the number of the voxels (nearest) or cells
   * (trilinear: cell i lies between voxel i and i + 1) whose samples are this part's to take.
   * positions (if any) are the whole's, whole_size[2] of them. Pictures of parts that own every
   * voxel once, each reduced pixel by pixel with zox_render_merge, are the picture of the whole, byte
   * for byte. *_init: all 0, the array is the whole. */
  int32_t whole_size[3], first[3], owned_first[3], owned_size[3];
  /* Parts must agree in how values are stored: the smallest and largest stored voxel of the whole.
   * Both 0: found from the array. */
  double lowest, highest;
} zox_render_array;

/* Sets record_size and gives every field its default. */
void zox_render_array_init(zox_render_array* array);

/* How the library keeps a volume. */
enum {
  ZOX_RENDER_AUTO = 0,   /* whichever measured quicker for such a volume; zox_render_volume_info tells */
  ZOX_RENDER_BRICKS = 1, /* a copy in bricks; whole numbers whose range passes 15 bits stay a stack */
  ZOX_RENDER_STACK = 2   /* slices: the caller's where their type and strides allow it, else a copy */
};

/* How many grey steps lie between two values of an 8-bit volume. */
enum {
  ZOX_RENDER_PRECISION_AUTO = 0,
  ZOX_RENDER_PRECISION_VOXEL = 1, /* samples are whole voxel values */
  ZOX_RENDER_PRECISION_FINE = 2   /* samples keep 7 more bits: smooth in narrow windows (AUTO) */
};

/* How a volume is to be kept. */
typedef struct zox_render_volume_options {
  uint32_t record_size;
  int32_t layout;    /* ZOX_RENDER_AUTO ... */
  int32_t precision; /* ZOX_RENDER_PRECISION_AUTO ... */
  /* 1: never refer to the caller's voxels after zox_render_volume_create, copy always. 0 (*_init):
   * where a stack needs no copy, the array must stay unchanged as long as the volume lives. */
  int32_t copy;
  int32_t bounds;        /* 1 (*_init): keep block bounds for skipping, at most 3 % more memory; 0: none */
  uint64_t memory_limit; /* refuse with ZOX_RENDER_NO_MEMORY what needs more bytes; 0: what the system has */
} zox_render_volume_options;

/* Sets record_size and gives every field its default. */
void zox_render_volume_options_init(zox_render_volume_options* options);

typedef struct zox_render_volume zox_render_volume;

/* options and run may be null. The volume must be given to zox_render_volume_destroy (null is ignored). */
int zox_render_volume_create(const zox_render_array* array, const zox_render_volume_options* options,
                             const zox_render_run* run, zox_render_volume** volume);
void zox_render_volume_destroy(zox_render_volume* volume);

/* What became of an array. */
typedef struct zox_render_volume_info {
  uint32_t record_size;
  int32_t size[3]; /* of the whole */
  int32_t layout;  /* ZOX_RENDER_BRICKS or ZOX_RENDER_STACK */
  int32_t bits;    /* of a stored sample: 16 */
  int32_t copied;  /* 0: the caller's voxels are referred to */
  int32_t regions; /* of uniform slice spacing; 1 for even slices */
  /* value = sample * sample_slope + sample_intercept; exact is 0 when the array's values may have been
   * rounded to steps of sample_slope: they did not fit 16 bits, or are floating point (of several values),
   * which is not looked at closer. */
  double sample_slope, sample_intercept;
  int32_t exact;
  double lowest, highest; /* values: the smallest and the largest of the array */
  double center[3];       /* millimetres: the middle of the volume */
  double corners[8][3];   /* millimetres: the outer corners of the corner voxels' centres, x fastest */
  uint64_t voxel_bytes, bounds_bytes; /* memory the volume takes */
} zox_render_volume_info;

/* Sets record_size and gives every field its default. */
void zox_render_volume_info_init(zox_render_volume_info* info);

/* Tells what became of the array; record_size must be set. */
int zox_render_volume_get_info(const zox_render_volume* volume, zox_render_volume_info* info);

/* Counts of the voxels in bins of equal width between the info's lowest and highest value, the highest
 * belonging to the last bin. bins: 1 to 65536. */
int zox_render_histogram(const zox_render_volume* volume, int bins, uint64_t* counts);

/* The smallest value that at least this share (0 to 1) of the voxels does not exceed. */
int zox_render_percentile(const zox_render_volume* volume, double share, double* value);

/* A window for maxima: black is what three quarters of all voxels do not exceed, white what all but
 * one in ten thousand do not exceed; where the two are one value (a sparse volume), black is that
 * value and white the largest one. */
int zox_render_default_window(const zox_render_volume* volume, double* center, double* width);

/* How often each sample occurs: counts[s + 32768] for sample s. Of a part: in the voxels that it owns, so
 * that the counts of parts add up to those of the whole. The other three functions count likewise. */
int zox_render_sample_counts(const zox_render_volume* volume, uint64_t counts[65536]);

/* The default window of counted samples, as zox_render_default_window chooses it. */
int zox_render_window_of_counts(double sample_slope, double sample_intercept, const uint64_t counts[65536],
                                double* center, double* width);

/* The value of the voxel (column, row, slice), exact but for info.exact; outside: BAD_ARGUMENT. */
int zox_render_voxel(const zox_render_volume* volume, const int32_t voxel[3], double* value);

/*
 * ---- Views ---------------------------------------------------------------------------------------
 */

enum { ZOX_RENDER_PERSPECTIVE = 0, ZOX_RENDER_ORTHOGRAPHIC = 1 };
enum { ZOX_RENDER_TRILINEAR = 0, ZOX_RENDER_NEAREST = 1 };
/* What becomes of the samples of a ray. */
enum {
  ZOX_RENDER_MAXIMUM = 0,
  ZOX_RENDER_MINIMUM = 1,
  ZOX_RENDER_MEAN = 2,             /* of the stored samples, rounded to the nearest, halves up */
  ZOX_RENDER_LARGEST_MAGNITUDE = 3 /* the value farthest from 0, with its sign; of two, the positive */
};

/* What is to be seen, and how. */
typedef struct zox_render_view {
  uint32_t record_size;
  int32_t width, height; /* pixels, 1 to 8192 each; *_init: 512 x 512 */
  /* Where the viewer stands, in degrees. azimuth 0: before the face, 90: at the patient's left.
   * elevation 90: above the head. The picture's up is the direction of growing elevation, turned
   * clockwise by roll. */
  double azimuth, elevation, roll;
  /* 1: instead of the angles, orientation: unit vectors to the right of the picture, up in it, and from
   * the viewer into it, each perpendicular to the others (left- or right-handed). */
  int32_t use_orientation;
  double orientation[3][3];
  int32_t projection;
  /* Perspective: the longer side of the picture spans this many degrees, 1 to 120. *_init: 30. */
  double field_of_view;
  /* 1 (*_init): the volume's box just fits, whatever the angles; 2: everything is twice as large. */
  double zoom;
  /* Instead of zoom, when above 0: millimetres a pixel (in perspective: at the centre's distance). */
  double pixel_size;
  /* What stands in the middle of the picture. *_init: use_center 0, the middle of the volume. */
  int32_t use_center;
  double center[3];
  /* Distance of samples, in the smallest of the three spacings, 0.05 to 64. *_init: 1. Sample n of every
   * ray lies n * step behind (n > 0) or before the plane through the centre (orthographic) or the sphere
   * around the eye (perspective). */
  double step;
  int32_t interpolation, reduction;
  /* Only samples whose depth behind the centre lies from slab_near to slab_far (millimetres, both
   * included, negative: before it) count. *_init: -infinity and infinity. Where both are the same number
   * the picture is one slice: each ray takes the single sample at that depth. */
  double slab_near, slab_far;
  /* Values shown from black to white. *_init: window_width 0, zox_render_default_window. Pixels are
   * v <= center - width / 2: 0; v >= center + width / 2: 255; linear between, truncated. */
  double window_center, window_width;
  int32_t skip; /* 1 (*_init): leave out what cannot change the picture; 0: cast every sample */
} zox_render_view;

/* Sets record_size and gives every field its default. */
void zox_render_view_init(zox_render_view* view);

/* Sets azimuth and elevation: anterior, front, coronal; posterior, back; left, sagittal; right; superior,
 * top, axial; inferior, bottom; capitals or not. From above (azimuth 180, elevation 90) and from below
 * (0, -90) the face is up in the picture. Others: ZOX_RENDER_BAD_ARGUMENT. */
int zox_render_view_by_name(zox_render_view* view, const char* name);

/* Where a view looks. */
typedef struct zox_render_geometry {
  uint32_t record_size;
  double right[3], up[3], forward[3]; /* unit vectors, as in orientation */
  double center[3];                   /* millimetres */
  double pixel_size;                  /* millimetres, in perspective at the centre's distance */
  double eye_distance;                /* from the centre, millimetres; orthographic: 0 */
  double step;                        /* millimetres from sample to sample */
} zox_render_geometry;

/* Sets record_size and gives every field its default. */
void zox_render_geometry_init(zox_render_geometry* geometry);

/* Tells where a view of this volume looks; record_size must be set. */
int zox_render_view_geometry(const zox_render_volume* volume, const zox_render_view* view,
                             zox_render_geometry* geometry);

/* Where sample number `sample` of the ray of pixel (column, row) lies: in millimetres and in voxels
 * (fractions of columns, rows, slices; may lie outside of the volume). Either output may be null. */
int zox_render_locate(const zox_render_volume* volume, const zox_render_view* view, double column, double row,
                      int32_t sample, double position[3], double voxel[3]);

/*
 * ---- Rendering -----------------------------------------------------------------------------------
 */

/* In `samples` of rays that took no sample. */
#define ZOX_RENDER_NOTHING (-32768)
/* In `depths` of such rays. */
#define ZOX_RENDER_NO_DEPTH INT32_MIN

/* Where a picture goes: each plane may be null and is then not made. Rows from the top, pixels from the
 * left. Only asking for pixels alone lets skipping stop at black and white. */
typedef struct zox_render_picture {
  uint32_t record_size;
  uint8_t* pixels;       /* display bytes; rays without samples are 0 */
  int64_t pixels_pitch;  /* bytes from row to row; 0: width */
  int16_t* samples;      /* what the window was applied to: info.sample_slope and _intercept give values */
  int64_t samples_pitch; /* bytes; 0: 2 * width */
  int32_t* depths;       /* the number of the sample that won, the nearest to the viewer of equals; not
                            for MEAN (BAD_ARGUMENT). Times geometry.step: millimetres behind the centre */
  int64_t depths_pitch;  /* bytes; 0: 4 * width */
} zox_render_picture;

/* Sets record_size and gives every field its default. */
void zox_render_picture_init(zox_render_picture* picture);

/* What a rendering came to. */
typedef struct zox_render_stats {
  uint32_t record_size;
  int64_t samples;                                     /* of all rays, as without skipping */
  int64_t samples_cast;                                /* taken; the rest was skipped */
  int64_t rays;                                        /* that have samples */
  double window_center, window_width;                  /* applied, in values */
  double seconds;                                      /* wall time of the call */
  double seconds_bounds, seconds_cast, seconds_window; /* of its phases, summed over threads */
  int32_t threads;
} zox_render_stats;

/* Sets record_size and gives every field its default. */
void zox_render_stats_init(zox_render_stats* stats);

/* Renders a view of a volume. run and stats may be null. */
int zox_render(const zox_render_volume* volume, const zox_render_view* view, const zox_render_run* run,
               const zox_render_picture* picture, zox_render_stats* stats);

/* Reduces the pictures of parts: into := into and other, sample by sample as the view's reduction says
 * (MAXIMUM, MINIMUM, LARGEST_MAGNITUDE), depths following the winner. count pixels; the depths of both or
 * of neither may be null. Associative and commutative, so that any order of parts gives the same bytes. */
int zox_render_merge(int32_t reduction, double sample_slope, double sample_intercept, int64_t count,
                     int16_t* into_samples, int32_t* into_depths, const int16_t* other_samples,
                     const int32_t* other_depths);

/* Maps samples to display bytes by a window in values, exactly as zox_render does; NOTHING becomes 0. */
int zox_render_window(double sample_slope, double sample_intercept, double window_center, double window_width,
                      int64_t count, const int16_t* samples, uint8_t* pixels);

#ifdef __cplusplus
}
#endif

#endif /* ZOX_RENDER_H */
