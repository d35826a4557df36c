#include "drawer.h"

#include <parts/picture.h>

#include <algorithm>
#include <chrono>
#include <cmath>

#include "exit_failure.h"
#include "render_objects.h"

namespace zox_mip {
namespace {

namespace parts = zox::parts;

class WholeDrawer : public Drawer {
 public:
  WholeDrawer(const zox::input::Scan& scan, const Options& options, const zox_render_run& run,
              const std::string& name)
      : name_(name), run_(run), volume_(make_volume(scan.array, options.volume, run_, name)) {}

  zox_render_stats draw(const zox_render_view& view, Planes& planes) override {
    const zox_render_picture picture = picture_of(planes);
    zox_render_stats stats;
    zox_render_stats_init(&stats);
    const int status = zox_render(volume_.get(), &view, &run_, &picture, &stats);
    if (status == ZOX_RENDER_EMPTY) refuse_empty(view, name_);
    check(status, name_);
    return stats;
  }
  zox_render_volume_info info() const override { return info_of(volume_.get()); }
  const zox_render_volume* geometry() const override { return volume_.get(); }

 private:
  std::string name_;
  zox_render_run run_;
  Volume volume_;
};

// Parts of the longest side that every sampling operation takes.
constexpr int32_t kLongestPart = 1024;

class PartsDrawer : public Drawer {
 public:
  PartsDrawer(zox::input::Scan scan, const Options& options, const zox_render_run& run,
              const std::string& name)
      : source_(parts::source_of(name, std::move(scan))),
        whole_(parts::measure(*source_, 0, slices(), measured_bytes(options))) {
    threads_ = options.threads;
    settings_.options = options.volume;
    settings_.run = run;
    settings_.depths = !options.depth_output.empty();
    const zox_render_array& array = source_->whole();
    parts::Limits limits;
    limits.longest = kLongestPart;
    if (options.memory > 0) limits.most_voxels = options.memory / parts::bytes_a_voxel(array);
    parts_ = parts::cut({array.size[0], array.size[1], array.size[2]}, limits, {});
    corner_ = parts::corner(*source_, whole_, settings_);
  }

  zox_render_stats draw(const zox_render_view& view, Planes& planes) override {
    const auto begin = std::chrono::steady_clock::now();
    settings_.view = view;
    parts::Picture picture = parts::empty_picture(settings_);
    for (const parts::Part& part : parts_)
      parts::PartVolume(*source_, whole_, part, settings_).add_to(picture, settings_);
    if (picture.samples_asked == 0) refuse_empty(view, "'" + source_->name() + "'");
    most_bytes_ = std::max(most_bytes_, picture.most_part_bytes);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    return take(picture, taken.count(), planes);
  }

  zox_render_volume_info info() const override {
    zox_render_volume_info info = info_of(corner_->handle());
    const zox_render_array& array = source_->whole();
    const double ends[] = {whole_.lowest * array.slope + array.intercept,
                           whole_.highest * array.slope + array.intercept};
    info.lowest = std::min(ends[0], ends[1]);
    info.highest = std::max(ends[0], ends[1]);
    info.voxel_bytes = most_bytes_;
    return info;
  }
  const zox_render_volume* geometry() const override { return corner_->handle(); }

 private:
  // Half of what a part may take, two slices of which fit.
  static uint64_t measured_bytes(const Options& options) {
    constexpr uint64_t kMost = 64 << 20;
    return options.memory > 0 ? std::min(options.memory / 2, kMost) : kMost;
  }
  int32_t slices() const { return source_->whole().size[2]; }

  zox_render_stats take(const parts::Picture& picture, double seconds, Planes& planes) const {
    zox_render_stats stats;
    zox_render_stats_init(&stats);
    stats.samples = picture.samples_asked;
    stats.samples_cast = picture.samples_cast;
    stats.threads = threads_;
    stats.seconds = seconds;
    planes.pixels = parts::display(settings_, picture, stats.window_center, stats.window_width);
    if (!planes.samples.empty()) planes.samples = picture.samples;
    if (!planes.depths.empty()) planes.depths = picture.depths;
    return stats;
  }

  std::unique_ptr<parts::Source> source_;
  parts::Measure whole_;
  parts::Settings settings_{};
  std::vector<parts::Part> parts_;
  std::unique_ptr<parts::PartVolume> corner_;
  uint64_t most_bytes_ = 0;
  int threads_;
};

}  // namespace

std::unique_ptr<Drawer> whole_drawer(const zox::input::Scan& scan, const Options& options,
                                     const zox_render_run& run, const std::string& name) {
  return std::make_unique<WholeDrawer>(scan, options, run, name);
}

std::unique_ptr<Drawer> parts_drawer(zox::input::Scan scan, const Options& options, const zox_render_run& run,
                                     const std::string& name) {
  if (options.view.reduction == ZOX_RENDER_MEAN)
    fail("'" + name + "' is rendered in parts, which give no mean; max, min and absmax can be had.");
  return std::make_unique<PartsDrawer>(std::move(scan), options, run, name);
}

void refuse_empty(const zox_render_view& view, const std::string& name) {
  const bool all = std::isinf(view.slab_near) && std::isinf(view.slab_far);
  fail(name + ": the view holds no sample of the volume" + (all ? "." : " at the depths asked for."));
}

}  // namespace zox_mip
