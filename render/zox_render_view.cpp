// Views: setting them up, and where they look.
#include <algorithm>
#include <limits>

#include "view/names.h"
#include "view/rays.h"
#include "volume/volume.h"

using render::checked;
using render::guarded;
using render::require;

namespace {

const render::Frame& frame_of(const zox_render_volume* handle) {
  require(handle != nullptr, "volume is null.");
  return handle->volume->frame;
}

void copy(const render::Vec3& from, double (&to)[3]) { std::copy(from.at.begin(), from.at.end(), to); }

}  // namespace

extern "C" {

void zox_render_view_init(zox_render_view* view) {
  if (!view) return;
  *view = {};
  view->record_size = sizeof *view;
  view->width = view->height = 512;
  view->field_of_view = 30;
  view->zoom = 1;
  view->step = 1;
  view->slab_near = -std::numeric_limits<double>::infinity();
  view->slab_far = std::numeric_limits<double>::infinity();
  view->skip = 1;
}

int zox_render_view_by_name(zox_render_view* view, const char* name) {
  return guarded([&] {
    checked(view, "view");
    require(name != nullptr, "name is null.");
    render::name_view(name, view->azimuth, view->elevation);
  });
}

void zox_render_geometry_init(zox_render_geometry* geometry) {
  if (!geometry) return;
  *geometry = {};
  geometry->record_size = sizeof *geometry;
}

int zox_render_view_geometry(const zox_render_volume* volume, const zox_render_view* view,
                             zox_render_geometry* geometry) {
  return guarded([&] {
    const render::Camera camera = render::make_camera(checked(view, "view"), frame_of(volume));
    checked(geometry, "geometry");
    copy(camera.right, geometry->right);
    copy(camera.up, geometry->up);
    copy(camera.forward, geometry->forward);
    copy(camera.center, geometry->center);
    geometry->pixel_size = camera.pixel_size;
    geometry->eye_distance = camera.eye_distance;
    geometry->step = camera.step;
  });
}

int zox_render_locate(const zox_render_volume* volume, const zox_render_view* view, double column, double row,
                      int32_t sample, double position[3], double voxel[3]) {
  return guarded([&] {
    const render::Frame& frame = frame_of(volume);
    const render::Camera camera = render::make_camera(checked(view, "view"), frame);
    require(std::abs(column) <= 1e6 && std::abs(row) <= 1e6,
            "column and row must be finite and within a million.");
    const render::Rays rays(camera, frame, *view);
    const render::Line line = rays.line(column, row);
    const double number = static_cast<double>(sample) - rays.number_offset();
    render::Vec3 at;
    for (size_t a = 0; a < 3; ++a) at.at[a] = (line.middle[a] + number * line.step[a]) / render::kGrid;
    const render::Vec3 point = frame.point(at);
    if (position) std::copy(point.at.begin(), point.at.end(), position);
    if (!voxel) return;
    std::copy(at.at.begin(), at.at.end(), voxel);
    voxel[2] = frame.slice_of_unit(at[2]);
  });
}

}  // extern "C"
