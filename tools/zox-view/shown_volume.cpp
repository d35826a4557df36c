#include "shown_volume.h"

#include <cmath>
#include <vector>

#include "../display/presets.h"
#include "json.h"
#include "server_limits.h"
#include "view_request.h"

namespace zox::view {
namespace {

constexpr double kShares[] = {0.5, 0.75, 0.9, 0.99, 0.999, 0.9999};

void check(int status) {
  if (status != ZOX_RENDER_OK) throw Refusal(zox_render_last_error());
}

std::string percentiles(const zox_render_volume* volume) {
  double values[std::size(kShares)];
  for (size_t i = 0; i < std::size(kShares); ++i)
    check(zox_render_percentile(volume, kShares[i], &values[i]));
  return JsonObject().list("shares", kShares).list("values", values).str();
}

std::string list_of_texts(const std::vector<std::string>& texts) {
  std::string list = "[";
  for (const std::string& text : texts) {
    if (list.size() > 1) list += ',';
    list += json_string(text);
  }
  return list + "]";
}

std::string presets() {
  std::string list = "[";
  for (const display::Preset& preset : display::presets()) {
    const double window[2] = {preset.center, preset.width};
    if (list.size() > 1) list += ',';
    list += JsonObject().text("name", preset.name).list("window", window).str();
  }
  return list + "]";
}

// No more bins than there are values between the ends, where those are whole numbers of steps.
int bins_for(const zox_render_array& array, const zox_render_volume_info& info) {
  if (array.type == ZOX_RENDER_FLOAT32 || array.type == ZOX_RENDER_FLOAT64) return kBins;
  const double values = (info.highest - info.lowest) / std::abs(array.slope) + 1;
  return values < kBins ? static_cast<int>(std::lround(values)) : kBins;
}

double length(const double (&vector)[3]) {
  return std::sqrt(vector[0] * vector[0] + vector[1] * vector[1] + vector[2] * vector[2]);
}

}  // namespace

Volume::Volume(const std::string& name, input::Scan scan, zox_render_pool* pool)
    : scan_(std::move(scan)), pool_(pool) {
  description_ = describe(name);
}

const zox_render_volume* Volume::in(int32_t layout) {
  const std::lock_guard lock(making_);
  auto& volume = made_[layout];
  if (!volume) {
    zox_render_volume_options options;
    zox_render_volume_options_init(&options);
    options.layout = layout;
    zox_render_run run;
    zox_render_run_init(&run);
    run.pool = pool_;
    zox_render_volume* made = nullptr;
    check(zox_render_volume_create(&scan_.array, &options, &run, &made));
    volume.reset(made);
  }
  return volume.get();
}

void Volume::position_of(const int32_t (&voxel)[3], double (&position)[3]) const {
  const zox_render_array& array = scan_.array;
  const double along =
      array.positions != nullptr ? array.positions[voxel[2]] / length(array.axes[2]) : voxel[2];
  for (int i = 0; i < 3; ++i)
    position[i] = array.origin[i] + voxel[0] * array.axes[0][i] + voxel[1] * array.axes[1][i] +
                  along * array.axes[2][i];
}

std::string Volume::describe(const std::string& name) {
  const zox_render_volume* volume = in(ZOX_RENDER_AUTO);
  zox_render_volume_info info;
  zox_render_volume_info_init(&info);
  check(zox_render_volume_get_info(volume, &info));
  double window[2];
  check(zox_render_default_window(volume, &window[0], &window[1]));
  std::vector<uint64_t> counts(static_cast<size_t>(bins_for(scan_.array, info)));
  check(zox_render_histogram(volume, static_cast<int>(counts.size()), counts.data()));
  const double spacing[3] = {length(scan_.array.axes[0]), length(scan_.array.axes[1]),
                             length(scan_.array.axes[2])};
  JsonObject json;
  json.text("do", "volume").text("name", name).list("size", info.size).list("spacing", spacing);
  json.flag("even", scan_.array.positions == nullptr).number("bits", info.bits);
  json.text("layout", info.layout == ZOX_RENDER_BRICKS ? "bricks" : "stack");
  json.number("lowest", info.lowest).number("highest", info.highest).number("value_step", info.sample_slope);
  json.flag("exact", info.exact != 0).list("center", info.center).list("window", window);
  if (scan_.window) json.list("file_window", {scan_.window->center, scan_.window->width});
  json.raw("percentiles", percentiles(volume))
      .raw("histogram", json_list(std::span<const uint64_t>(counts)))
      .raw("presets", presets());
  return json.raw("notes", list_of_texts(scan_.notes)).str();
}

std::shared_ptr<Volume> Volumes::get(const std::string& name) {
  // One at a time: who asks for a volume that is being made gets that one.
  const std::lock_guard lock(mutex_);
  known_.remove_if([](const auto& entry) { return entry.second.expired(); });
  for (const auto& [known, volume] : known_)
    if (known == name) return last_ = volume.lock();
  last_.reset();
  last_ = make_(name);
  known_.emplace_back(name, last_);
  return last_;
}

}  // namespace zox::view
