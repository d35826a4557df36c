#include "pictures.h"

#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>

#include "failure.h"
#include "jobs.h"
#include "output.h"
#include "planes.h"
#include "progress.h"
#include "report.h"
#include "scan.h"
#include "volume.h"

namespace zox_mip {
namespace {

namespace input = zox::input;
namespace output = zox::output;

class Clock {
 public:
  // Seconds since the last call.
  double lap() {
    const auto now = std::chrono::steady_clock::now();
    return std::chrono::duration<double>(now - std::exchange(last_, now)).count();
  }

 private:
  std::chrono::steady_clock::time_point last_ = std::chrono::steady_clock::now();
};

// The share of all the work, shown as it grows.
struct Work {
  Progress bar;
  bool shown;
  double begin = 0, share = 0;  // of the part that is being done
  static int show(void* user, double part) {
    Work& work = *static_cast<Work*>(user);
    if (work.shown) work.bar.show(work.begin + work.share * part);
    return 0;
  }
};

input::Scan read_volume(const Options& options) {
  if (options.input.empty()) return input::make_phantom();
  input::ReadOptions read;
  read.seconds = options.seconds_to_read;
  read.volume = options.volume_number;
  read.series = options.series;
  return input::read_scan(options.input, read);
}

// The library's limits, told in the file's terms.
void check_sizes(const input::Scan& scan, const std::string& name) {
  constexpr int kMost = 2048;
  for (int axis = 0; axis < 3; ++axis)
    if (scan.array.size[axis] > kMost)
      fail(name + " is " + std::to_string(scan.array.size[axis]) + " voxels long along its axis " +
           std::to_string(axis) + "; 2 to " + std::to_string(kMost) + " are possible.");
}

void apply_window_of_file(const input::Scan& scan, const std::string& name, Options& options) {
  if (!options.window_of_file) return;
  if (!scan.window) fail(name + " names no window to show it in.");
  options.view.window_center = scan.window->center;
  options.view.window_width = scan.window->width;
}

void tell(const std::string& text, const Options& options) {
  std::fputs(text.c_str(), options.output == output::kStandardOutput ? stderr : stdout);
}

// Makes and writes the pictures one after the other.
class Renderer {
 public:
  Renderer(const Options& options, const zox_render_volume* volume, zox_render_run run, Work& work,
           Report& report)
      : options_(options),
        volume_(volume),
        run_(run),
        work_(work),
        report_(report),
        palette_(palette_of(options.colormap)),
        planes_(make_planes(options)) {}

  void make(const Job& job) {
    Clock clock;
    const zox_render_view view = view_of(job, options_, volume_);
    const zox_render_picture picture = picture_of(planes_);
    Report::Picture made{job, {}};
    zox_render_stats_init(&made.stats);
    const int status = zox_render(volume_, &view, &run_, &picture, &made.stats);
    if (status == ZOX_RENDER_EMPTY) refuse_empty(job);
    check(status, report_.name);
    report_.pictures.push_back(made);
    report_.times.render += clock.lap();
    write(job, view);
    report_.times.write += clock.lap();
  }

 private:
  [[noreturn]] void refuse_empty(const Job& job) const {
    const bool all = std::isinf(options_.view.slab_near) && std::isinf(options_.view.slab_far);
    fail(report_.name + ": the view '" + job.view->name + "' holds no sample of the volume" +
         (all ? "." : " at the depths asked for."));
  }

  void write(const Job& job, const zox_render_view& view) {
    const output::Image image = image_of(planes_, options_, palette_);
    if (is_animation(options_)) {
      constexpr int kTurnMilliseconds = 6000;
      const int frames = options_.spin.frames;
      if (!animation_)
        animation_.emplace(frames, std::max(kTurnMilliseconds / frames, 20), options_.png_level);
      animation_->add(image);
      if (job.last_of_animation) {
        output::write_file(job.output, animation_->finish());
        animation_.reset();
      }
    } else {
      output::write_file(job.output, output::encode_png(image, options_.png_level));
    }
    if (!job.raw_output.empty()) write_samples(job.raw_output, planes_, options_, report_.info);
    if (job.depth_output.empty()) return;
    zox_render_geometry geometry;
    zox_render_geometry_init(&geometry);
    check(zox_render_view_geometry(volume_, &view, &geometry), report_.name);
    write_depths(job.depth_output, planes_, options_, geometry.step);
  }

  const Options& options_;
  const zox_render_volume* volume_;
  zox_render_run run_;
  Work& work_;
  Report& report_;
  output::Palette palette_;
  Planes planes_;
  std::optional<output::Animation> animation_;
};

}  // namespace

void make_pictures(const Options& asked) {
  Options options = asked;
  const bool phantom = options.input.empty();
  const std::string name = phantom ? "phantom" : "'" + options.input + "'";
  const std::vector<Job> jobs = make_jobs(options);
  check_outputs(jobs, phantom ? std::vector<std::string>() : input::files_of(options.input));

  Report report;
  report.name = phantom ? "phantom" : options.input;
  Clock clock;
  const input::Scan scan = read_volume(options);
  report.times.read = clock.lap();
  check_sizes(scan, name);
  apply_window_of_file(scan, name, options);

  Work work{{}, !options.quiet && isatty(STDERR_FILENO) != 0};
  const Pool pool = make_pool(options.threads);
  zox_render_run run;
  zox_render_run_init(&run);
  run.pool = pool.get();
  run.progress = Work::show;
  run.progress_user = &work;
  work.share = 1.0 / static_cast<double>(jobs.size() + 1);
  clock.lap();
  const Volume volume = make_volume(scan.array, options.volume, run, name);
  report.times.volume = clock.lap();
  report.info = info_of(volume.get());
  report.type = scan.array.type;
  for (size_t axis = 0; axis < 3; ++axis) {
    const auto& step = scan.array.axes[axis];
    report.spacing[axis] = std::hypot(step[0], step[1], step[2]);
  }

  Renderer renderer(options, volume.get(), run, work, report);
  for (const Job& job : jobs) {
    work.begin += work.share;
    renderer.make(job);
  }
  work.bar.clear();
  if (!options.quiet)
    for (const std::string& note : scan.notes) std::fprintf(stderr, "zox-mip: %s\n", note.c_str());
  if (options.stats) tell(report_json(report, options), options);
  if (!options.quiet && !options.stats) tell(report_text(report, options), options);
}

}  // namespace zox_mip
