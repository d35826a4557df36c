#include "pictures.h"

#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>

#include "drawer.h"
#include "failure.h"
#include "jobs.h"
#include "output.h"
#include "planes.h"
#include "progress.h"
#include "report.h"
#include "scan.h"
#include "volume.h"
#include "writer.h"

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

input::ReadOptions read_options(const Options& options) {
  input::ReadOptions read;
  read.seconds = options.seconds_to_read;
  read.volume = options.volume_number;
  read.series = options.series;
  read.memory_limit = options.memory;
  read.leave_in_file = true;
  return read;
}

input::Scan read_volume(const Options& options) {
  if (options.input.empty()) return input::make_phantom();
  return input::read_scan(options.input, read_options(options));
}

// The library's limit of a volume that is held as a whole.
bool is_too_large(const input::Scan& scan) {
  constexpr int kMost = 2048;
  const auto& size = scan.array.size;
  return size[0] > kMost || size[1] > kMost || size[2] > kMost;
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

void describe(const input::Scan& scan, const std::string& name, Report& report) {
  report.name = name;
  report.type = scan.array.type;
  for (size_t axis = 0; axis < 3; ++axis) {
    const auto& step = scan.array.axes[axis];
    report.spacing[axis] = std::hypot(step[0], step[1], step[2]);
  }
}

void make_picture(const Job& job, const Options& options, Drawer& drawer, Writer& writer, Report& report) {
  Clock clock;
  const zox_render_view view = view_of(job, options, drawer.geometry());
  zox_render_geometry geometry;
  zox_render_geometry_init(&geometry);
  check(zox_render_view_geometry(drawer.geometry(), &view, &geometry), report.name);
  report.pictures.push_back({job, drawer.draw(view, writer.planes())});
  report.times.render += clock.lap();
  writer.write(job, geometry, drawer.info());
  report.times.write += clock.lap();
}

}  // namespace

void list_series(const Options& options) {
  if (options.input.empty()) reject_usage("The phantom has no series: name a folder of DICOM files.");
  for (const std::string& line : input::list_series(options.input, read_options(options)))
    std::printf("%s\n", line.c_str());
}

void make_pictures(const Options& asked) {
  Options options = asked;
  const bool phantom = options.input.empty();
  const std::string name = phantom ? "phantom" : "'" + options.input + "'";
  const std::vector<Job> jobs = make_jobs(options);
  check_outputs(jobs, phantom ? std::vector<std::string>() : input::files_of(options.input));

  Report report;
  Clock clock;
  input::Scan scan = read_volume(options);
  const std::vector<std::string> notes = scan.notes;
  report.times.read = clock.lap();
  apply_window_of_file(scan, name, options);
  describe(scan, phantom ? "phantom" : options.input, report);

  Work work{{}, !options.quiet && isatty(STDERR_FILENO) != 0};
  const Pool pool = make_pool(options.threads);
  zox_render_run run;
  zox_render_run_init(&run);
  run.pool = pool.get();
  run.progress = Work::show;
  run.progress_user = &work;
  work.share = 1.0 / static_cast<double>(jobs.size() + 1);
  clock.lap();
  const bool in_parts = options.memory > 0 || is_too_large(scan);
  if (!in_parts) input::map_voxels(scan);
  const std::unique_ptr<Drawer> drawer =
      in_parts ? parts_drawer(std::move(scan), options, run, name) : whole_drawer(scan, options, run, name);
  report.times.volume = clock.lap();

  Writer writer(options);
  for (const Job& job : jobs) {
    work.begin += work.share;
    make_picture(job, options, *drawer, writer, report);
  }
  report.info = drawer->info();
  work.bar.clear();
  if (!options.quiet)
    for (const std::string& note : notes) std::fprintf(stderr, "zox-mip: %s\n", note.c_str());
  if (options.stats) tell(report_json(report, options), options);
  if (!options.quiet && !options.stats) tell(report_text(report, options), options);
}

}  // namespace zox_mip
