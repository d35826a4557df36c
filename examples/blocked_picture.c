/* A knot in bricks, seen obliquely: an orthographic maximum-intensity picture, tile by tile.
 *     cc blocked_picture.c -o blocked_picture $(pkg-config --cflags --libs zox_volume) -lm
 *     ./blocked_picture knot.pgm */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <zox_volume.h>
#include <zox_volume_layout.h>

enum {
  kColumns = 120,
  kRows = 110,
  kLayers = 70,
  kWidth = 256,
  kHeight = 256,
  kTile = 8,
  kRays = kTile * kTile,
  kSamples = 256,
  kPlane = kRays + 32 /* planes an odd number of 64-byte lines apart: a power of two would be slow */
};

/* A tube of radius 5 along a trefoil knot, brighter from its beginning to its end. */
static void paint_knot(int16_t* voxels) {
  for (int i = 0; i < 3000; ++i) {
    const double t = i * (2 * 3.14159265358979323846 / 3000);
    const double center[3] = {60 + 16 * (sin(t) + 2 * sin(2 * t)), 55 + 16 * (cos(t) - 2 * cos(2 * t)),
                              35 - 24 * sin(3 * t)};
    for (int z = (int)center[2] - 5; z <= center[2] + 6; ++z)
      for (int y = (int)center[1] - 5; y <= center[1] + 6; ++y)
        for (int x = (int)center[0] - 5; x <= center[0] + 6; ++x) {
          const double dx = x - center[0], dy = y - center[1], dz = z - center[2];
          if (dx * dx + dy * dy + dz * dz <= 25)
            voxels[x + kColumns * (y + kRows * z)] = (int16_t)(300 + i / 5);
        }
  }
}

/* What an orthographic camera needs: the middle of the picture at sample 0, one pixel to the right, one down,
 * and one sample further, all in voxels. */
typedef struct Camera {
  double origin[3], right[3], down[3], step[3];
} Camera;

static Camera place_camera(double azimuth, double elevation, double pixel) {
  const double a = azimuth * 3.14159265358979323846 / 180, e = elevation * 3.14159265358979323846 / 180;
  const double right[3] = {cos(a), sin(a), 0};
  const double forward[3] = {-sin(a) * cos(e), cos(a) * cos(e), -sin(e)};
  const double down[3] = {-sin(a) * sin(e), cos(a) * sin(e), cos(e)};
  const double middle[3] = {(kColumns - 1) / 2.0, (kRows - 1) / 2.0, (kLayers - 1) / 2.0};
  Camera camera;
  for (int axis = 0; axis < 3; ++axis) {
    camera.right[axis] = right[axis] * pixel;
    camera.down[axis] = -down[axis] * pixel; /* the picture's rows go down, z goes up */
    camera.step[axis] = forward[axis];
    camera.origin[axis] = middle[axis] - forward[axis] * (kSamples / 2);
  }
  return camera;
}

/* The maxima of one tile of 8 x 8 rays. Rays that miss the volume keep the lowest value. */
static int cast_tile(const zox_Volume* volume, const zox_SampleBox* box, const Camera* camera, int left,
                     int top, int16_t* picture) {
  static int16_t samples[kSamples][kPlane];
  void* planes[kSamples];
  double points[kRays][3];
  const double* starts[kRays];
  const double* steps[] = {camera->step}; /* parallel operations read one step for all rays */
  int32_t counts[kRays], pixels[kRays], rays = 0;
  int16_t maxima[kRays];
  for (int k = 0; k < kSamples; ++k) planes[k] = samples[k];
  for (int i = 0; i < kRays; ++i) {
    const int column = left + i % kTile, row = top + i / kTile;
    double* start = points[rays];
    int32_t first;
    for (int axis = 0; axis < 3; ++axis)
      start[axis] = camera->origin[axis] + (column - kWidth / 2) * camera->right[axis] +
                    (row - kHeight / 2) * camera->down[axis];
    counts[rays] = zox_clip(box, start, camera->step, kSamples, &first);
    if (counts[rays] == 0) continue;
    for (int axis = 0; axis < 3; ++axis) start[axis] += first * camera->step[axis];
    starts[rays] = start;
    pixels[rays++] = column + kWidth * row;
  }
  zox_Rays batch = {planes, rays, starts, steps, counts};
  int status = zox_Volume_RayCast_Blocked_Parallel_Trilinear_16S(volume, &batch);
  if (status == ZOX_STS_NO_ERROR) status = zox_Volume_FindMax_16S(&batch, maxima);
  for (int r = 0; r < rays; ++r) picture[pixels[r]] = maxima[r];
  return status;
}

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: blocked_picture PICTURE.pgm\n");
    return 2;
  }
  int16_t* voxels = (int16_t*)calloc(kColumns * kRows * kLayers, sizeof *voxels);
  const int32_t size = zox_blocked_size(kColumns, kRows);
  int16_t* bricks = (int16_t*)calloc(zox_blocked_elements(size, kLayers), sizeof *bricks);
  int16_t* picture = (int16_t*)malloc(kWidth * kHeight * sizeof *picture);
  uint8_t* bytes = (uint8_t*)malloc(kWidth * kHeight);
  if (!voxels || !bricks || !picture || !bytes) return 1;
  paint_knot(voxels);
  zox_blocked_pack_16S(voxels, kColumns, kRows, kLayers, kColumns, kColumns * kRows, bricks, size, 0);

  zox_Volume volume;
  volume.data = bricks;
  volume.size = size;
  const zox_SampleBox box = zox_blocked_box(kColumns, kRows, kLayers, 1);
  const Camera camera = place_camera(-20, 60, 0.5);
  int status = ZOX_STS_NO_ERROR;
  for (int i = 0; i < kWidth * kHeight; ++i) picture[i] = -32768;
  for (int top = 0; top < kHeight && status == ZOX_STS_NO_ERROR; top += kTile)
    for (int left = 0; left < kWidth && status == ZOX_STS_NO_ERROR; left += kTile)
      status = cast_tile(&volume, &box, &camera, left, top, picture);
  if (status == ZOX_STS_NO_ERROR)
    status = zox_Volume_WindowLevel_16S_8U(picture, bytes, kWidth * kHeight, 450, 900, 0, 255);
  if (status != ZOX_STS_NO_ERROR) {
    fprintf(stderr, "blocked_picture: %s\n", zox_GetStringStatus(status));
    return 1;
  }
  FILE* file = fopen(argv[1], "wb");
  if (!file || fprintf(file, "P5\n%d %d\n255\n", kWidth, kHeight) < 0 ||
      fwrite(bytes, 1, kWidth * kHeight, file) != kWidth * kHeight || fclose(file) != 0) {
    perror(argv[1]);
    return 1;
  }
  free(voxels);
  free(bricks);
  free(picture);
  free(bytes);
  return 0;
}
