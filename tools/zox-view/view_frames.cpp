#include "view_frames.h"

#include <cmath>

#include "encode.h"
#include "json.h"

namespace zox::view {
namespace {

std::string header(const FrameRequest& request, const zox_render_geometry& geometry,
                   const zox_render_stats& stats) {
  const double window[2] = {stats.window_center, stats.window_width};
  JsonObject json;
  json.text("do", "frame").number("n", request.number);
  json.text("as", request.quality == 0 ? "png" : "jpeg");
  json.number("width", request.view.width).number("height", request.view.height);
  json.list("right", geometry.right).list("up", geometry.up).list("forward", geometry.forward);
  json.list("center", geometry.center).number("pixel_size", geometry.pixel_size);
  json.number("eye_distance", geometry.eye_distance).number("step", geometry.step).list("window", window);
  json.number("samples", stats.samples).number("cast", stats.samples_cast);
  return json.number("seconds", stats.seconds).number("threads", stats.threads).str();
}

Answer framed(const std::string& json, const std::string& picture) {
  Answer answer{true, {}};
  answer.data.reserve(4 + json.size() + picture.size());
  for (int i = 0; i < 4; ++i) answer.data += static_cast<char>(json.size() >> (8 * i) & 255);
  answer.data += json;
  answer.data += picture;
  return answer;
}

// The voxel nearest to a sample's place; the place lies inside of the volume but for rounding.
void nearest_voxel(const double (&place)[3], const zox_render_volume_info& info, int32_t (&voxel)[3]) {
  for (int i = 0; i < 3; ++i) {
    const double inside = std::fmin(std::fmax(place[i], 0), info.size[i] - 1);
    voxel[i] = static_cast<int32_t>(std::lround(inside));
  }
}

}  // namespace

Answer cancelled(uint32_t number) {
  return {false, JsonObject().text("do", "cancelled").number("n", number).str()};
}

Answer complaint(uint32_t number, const std::string& sentence) {
  return {false, JsonObject().text("do", "error").number("n", number).text("text", sentence).str()};
}

int Frames::render(const FrameRequest& request, std::atomic<bool>& cancel, const zox_render_picture& picture,
                   zox_render_stats& stats) {
  zox_render_run run;
  zox_render_run_init(&run);
  run.pool = pool_;
  run.progress = [](void* flag, double) { return static_cast<std::atomic<bool>*>(flag)->load() ? 1 : 0; };
  run.progress_user = &cancel;
  return zox_render(volume_->in(request.layout), &request.view, &run, &picture, &stats);
}

Answer Frames::draw(const FrameRequest& request, std::atomic<bool>& cancel) {
  const zox_render_view& view = request.view;
  drawn_ = false;
  samples_.clear();
  depths_.clear();
  std::vector<uint8_t> pixels(static_cast<size_t>(view.width) * static_cast<size_t>(view.height));
  zox_render_picture picture;
  zox_render_picture_init(&picture);
  picture.pixels = pixels.data();
  zox_render_stats stats;
  zox_render_stats_init(&stats);
  const int status = render(request, cancel, picture, stats);
  if (status == ZOX_RENDER_CANCELLED) return cancelled(request.number);
  if (status != ZOX_RENDER_OK) return complaint(request.number, zox_render_last_error());
  zox_render_geometry geometry;
  zox_render_geometry_init(&geometry);
  if (zox_render_view_geometry(volume_->in(request.layout), &view, &geometry) != ZOX_RENDER_OK)
    return complaint(request.number, zox_render_last_error());
  last_ = request;
  drawn_ = true;
  return framed(header(request, geometry, stats),
                request.quality == 0 ? encode_png(view.width, view.height, pixels)
                                     : encode_jpeg(view.width, view.height, pixels, request.quality));
}

int Frames::find_depths(std::atomic<bool>& cancel) {
  if (!samples_.empty()) return ZOX_RENDER_OK;
  const size_t count = static_cast<size_t>(last_.view.width) * static_cast<size_t>(last_.view.height);
  std::vector<int16_t> samples(count);
  std::vector<int32_t> depths(last_.view.reduction == ZOX_RENDER_MEAN ? 0 : count);
  zox_render_picture picture;
  zox_render_picture_init(&picture);
  picture.samples = samples.data();
  picture.depths = depths.empty() ? nullptr : depths.data();
  zox_render_stats stats;
  zox_render_stats_init(&stats);
  const int status = render(last_, cancel, picture, stats);
  if (status != ZOX_RENDER_OK) return status;
  samples_.swap(samples);
  depths_.swap(depths);
  return status;
}

Answer Frames::pick(const PickRequest& request, std::atomic<bool>& cancel) {
  if (!drawn_) return cancelled(request.number);
  if (request.column < 0 || request.column >= last_.view.width || request.row < 0 ||
      request.row >= last_.view.height)
    return complaint(request.number, "This pixel lies outside of the picture.");
  const int status = find_depths(cancel);
  if (status == ZOX_RENDER_CANCELLED) return cancelled(request.number);
  if (status != ZOX_RENDER_OK) return complaint(request.number, zox_render_last_error());
  return {false, found(request)};
}

std::string Frames::found(const PickRequest& request) const {
  const size_t pixel = static_cast<size_t>(request.row) * static_cast<size_t>(last_.view.width) +
                       static_cast<size_t>(request.column);
  JsonObject json;
  json.text("do", "pick").number("n", request.number).number("x", request.column).number("y", request.row);
  if (samples_[pixel] == ZOX_RENDER_NOTHING) return json.flag("found", false).str();
  const zox_render_volume* volume = volume_->in(last_.layout);
  zox_render_volume_info info;
  zox_render_volume_info_init(&info);
  if (zox_render_volume_get_info(volume, &info) != ZOX_RENDER_OK) return json.flag("found", false).str();
  json.number("value", samples_[pixel] * info.sample_slope + info.sample_intercept);
  double position[3], place[3], middle[3], value;
  int32_t voxel[3];
  // A mean belongs to no place.
  if (depths_.empty() || zox_render_locate(volume, &last_.view, request.column, request.row, depths_[pixel],
                                           position, place) != ZOX_RENDER_OK)
    return json.flag("found", false).str();
  nearest_voxel(place, info, voxel);
  if (zox_render_voxel(volume, voxel, &value) != ZOX_RENDER_OK) return json.flag("found", false).str();
  volume_->position_of(voxel, middle);
  json.flag("found", true).list("position", position).list("voxel", voxel).list("voxel_position", middle);
  return json.number("voxel_value", value).str();
}

}  // namespace zox::view
