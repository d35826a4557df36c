/* A user of the installed rendering library: a picture of one bright voxel. */
#include <zox_render.h>

int main(void) {
  static uint8_t voxels[8 * 8 * 8], pixels[16 * 16];
  voxels[4 + 8 * 4 + 64 * 4] = 200;
  zox_render_array array;
  zox_render_array_init(&array);
  array.type = ZOX_RENDER_UINT8;
  array.size[0] = array.size[1] = array.size[2] = 8;
  array.data = voxels;
  zox_render_volume* volume;
  if (zox_render_volume_create(&array, NULL, NULL, &volume) != ZOX_RENDER_OK) return 1;
  zox_render_view view;
  zox_render_view_init(&view);
  view.width = view.height = 16;
  zox_render_picture picture;
  zox_render_picture_init(&picture);
  picture.pixels = pixels;
  int status = zox_render(volume, &view, NULL, &picture, NULL);
  zox_render_volume_destroy(volume);
  int lit = 0;
  for (int i = 0; i < 16 * 16; ++i) lit += pixels[i] > 0;
  return status == ZOX_RENDER_OK && lit > 0 && lit < 64 ? 0 : 1;
}
