#include "pictures.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>

#include "drawer.h"
#include "exit_failure.h"
#include "planes.h"
#include "render_objects.h"
#include "scan.h"
#include "writer.h"

namespace zox_mip {
namespace {

namespace input = zox::input;

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

input::Scan read_volume(const Study& study, const Options& options) {
  if (study.files.empty()) return input::make_phantom();
  return input::read_scan(study.files[0], read_options(study, options));
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

// Of slices that are not evenly apart: the middle one of their distances.
double usual_distance(const std::vector<double>& positions) {
  std::vector<double> distances;
  for (size_t i = 1; i < positions.size(); ++i)
    distances.push_back(std::abs(positions[i] - positions[i - 1]));
  const auto middle = distances.begin() + static_cast<ptrdiff_t>((distances.size() - 1) / 2);
  std::nth_element(distances.begin(), middle, distances.end());
  return *middle;
}

void describe(const input::Scan& scan, const std::string& name, Report& report) {
  report.name = name;
  report.type = scan.array.type;
  for (size_t axis = 0; axis < 3; ++axis) {
    const auto& step = scan.array.axes[axis];
    report.spacing[axis] = std::hypot(step[0], step[1], step[2]);
  }
  if (!scan.positions.empty()) report.spacing[2] = usual_distance(scan.positions);
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

Report make_pictures(const Study& study, const Options& asked, Work& work) {
  Options options = asked;
  const std::string name = study.quoted_title();
  Report report;
  Clock clock;
  input::Scan scan = read_volume(study, options);
  report.notes = scan.notes;
  report.times.read = clock.lap();
  apply_window_of_file(scan, name, options);
  describe(scan, study.title(), report);

  const bool in_parts = options.memory > 0 || is_too_large(scan);
  if (!in_parts) input::map_voxels(scan);
  // The pool's threads end before another study is read: its process is made by fork.
  const Pool pool = make_pool(options.threads);
  zox_render_run run;
  zox_render_run_init(&run);
  run.pool = pool.get();
  run.progress = Work::show;
  run.progress_user = &work;
  report.times.read += clock.lap();
  const std::unique_ptr<Drawer> drawer = in_parts ? parts_drawer(std::move(scan), options, run, report.name)
                                                  : whole_drawer(scan, options, run, name);
  report.times.volume = clock.lap();

  Writer writer(options);
  for (const Job& job : study.jobs) {
    work.next_step();
    make_picture(job, options, *drawer, writer, report);
  }
  report.info = drawer->info();
  return report;
}

}  // namespace zox_mip
