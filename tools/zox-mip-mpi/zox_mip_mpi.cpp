// zox-mip-mpi: what zox-mip does, by many processes that each hold a part of the volume.
#include <parts/source.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <new>
#include <optional>
#include <thread>

#include "available_memory.h"
#include "endings.h"
#include "exit_failure.h"
#include "jobs.h"
#include "output.h"
#include "rank_report.h"
#include "reduce_ranks.h"
#include "render_objects.h"
#include "shared_source.h"
#include "spread_volume.h"
#include "studies.h"
#include "writer.h"

namespace zox_mip_mpi {
namespace {

namespace parts = zox::parts;
using zox_mip::Job;
using zox_mip::Options;

// Parts no longer than every sampling operation takes.
constexpr int32_t kLongestPart = 1024;

// Bytes for the parts of a rank: as asked for, or its share of three quarters of what its machine could
// give, which leaves room for pictures. The smallest of all ranks, since all must cut alike.
uint64_t memory_of_rank(const Group& group, const Options& options) {
  const auto share = static_cast<uint64_t>(group.neighbours());
  return group.least(options.memory ? options.memory : zox::input::available_memory() / 4 * 3 / share);
}

// Without -j the ranks of a machine share its cores.
int threads_of_rank(const Group& group, const Options& options) {
  if (options.threads_given) return options.threads;
  const int cores = static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN));
  return std::clamp(cores / group.neighbours(), 1, options.threads);
}

void check_options(const Options& options) {
  if (options.view.reduction == ZOX_RENDER_MEAN)
    zox_mip::reject_usage(
        "A volume on many ranks gives no mean; --reduction max, min and absmax can be had.");
  if (options.inputs.size() > 1) zox_mip::reject_usage("Many ranks show one volume; name one.");
  if (options.list_series) zox_mip::reject_usage("zox-mip lists series, by one process.");
}

std::string name_of_input(const Options& options) {
  return options.inputs.empty() ? "phantom" : options.inputs[0];
}

// --memory is what the parts of a rank may take; reading may take what there is.
zox::input::ReadOptions how_to_read(const Options& options) {
  zox::input::ReadOptions read = read_options({}, options);
  read.memory_limit = 0;
  return read;
}

zox::input::Scan read_at_root(const Group& group, const Options& options) {
  zox::input::Scan scan;
  zox_render_array_init(&scan.array);
  group.together([&] {
    if (!group.is_root()) return;
    if (options.inputs.empty()) {
      scan = zox::input::make_phantom();
      return;
    }
    scan = zox::input::read_scan(options.inputs[0], how_to_read(options));
  });
  return scan;
}

// The file's window, known to all.
void take_window(const Group& group, const zox::input::Scan& scan, Options& options) {
  if (!options.window_of_file) return;
  group.together([&] {
    if (group.is_root() && !scan.window)
      throw zox::input::Failure("'" + name_of_input(options) + "' names no window to show it in.");
  });
  double window[2] = {scan.window ? scan.window->center : 0, scan.window ? scan.window->width : 0};
  group.share(window, sizeof window);
  options.view.window_center = window[0];
  options.view.window_width = window[1];
}

void make_picture(const Group& group, const Job& job, const SpreadVolume& volume, const Options& options,
                  parts::Settings settings, zox_mip::Writer& writer, Totals& totals) {
  settings.view = view_of(job, options, volume.corner());
  int64_t cast = 0;
  const parts::Picture picture = volume.render(settings, cast);
  totals.cast += cast;
  totals.reduced += reduced_bytes(settings);
  group.together([&] {
    if (!group.is_root()) return;
    totals.samples += picture.samples_asked;
    if (picture.samples_asked == 0) throw zox::input::Failure("The view holds no sample of the volume.");
    double center = 0, width = 0;
    writer.planes().pixels = parts::display(settings, picture, center, width);
    if (!writer.planes().samples.empty()) writer.planes().samples = picture.samples;
    if (!writer.planes().depths.empty()) writer.planes().depths = picture.depths;
    zox_render_geometry geometry;
    zox_render_geometry_init(&geometry);
    zox_mip::check(zox_render_view_geometry(volume.corner(), &settings.view, &geometry),
                   name_of_input(options));
    writer.write(job, geometry, zox_mip::info_of(volume.corner()));
  });
}

// How far the work has come.
void tell(const Group& group, const Options& options, const std::string& what) {
  if (group.is_root() && !options.quiet) std::fprintf(stderr, "zox-mip-mpi: %s\n", what.c_str());
}

void make_pictures(const Group& group, Options options) {
  const std::vector<Job> jobs = make_jobs(options, zox_mip::name_of(options.inputs));
  group.together([&] {
    if (group.is_root())
      check_outputs(jobs, options.inputs.empty() ? std::vector<std::string>()
                                                 : zox::input::files_of(options.inputs[0]));
  });
  Totals totals;
  Clock clock;
  zox::input::Scan scan = read_at_root(group, options);
  take_window(group, scan, options);
  const std::vector<std::string> notes = scan.notes;
  totals.read = clock.lap();

  std::optional<zox_mip::Pool> pool;
  group.together([&] { pool = zox_mip::make_pool(threads_of_rank(group, options)); });
  parts::Settings settings{};
  settings.view = options.view;
  settings.options = options.volume;
  zox_render_run_init(&settings.run);
  settings.run.pool = pool->get();
  settings.depths = !options.depth_output.empty();
  SharedSource source(group, name_of_input(options), how_to_read(options), std::move(scan));
  const SpreadSource from{source, source.is_in_file(), [&](const auto& lists) { source.distribute(lists); }};
  tell(group, options, "reading " + std::to_string(source.whole().size[2]) + " slices");
  const SpreadVolume volume(group, from, settings, kLongestPart, memory_of_rank(group, options));
  totals.volume = clock.lap();

  zox_mip::Writer writer(options);
  for (const Job& job : jobs) {
    tell(group, options,
         "picture " + std::to_string(&job - jobs.data() + 1) + " of " + std::to_string(jobs.size()));
    make_picture(group, job, volume, options, settings, writer, totals);
  }
  totals.render = clock.lap();
  if (group.is_root() && !options.quiet)
    for (const std::string& note : notes) std::fprintf(stderr, "zox-mip-mpi: %s\n", note.c_str());
  report(group, volume, options, totals);
}

int complain(const char* sentence, int status) {
  std::fprintf(stderr, "zox-mip-mpi: %s\n", sentence);
  return status;
}

int run(const Group& group, int argc, char** argv) {
  std::optional<Options> options;
  try {
    // The root alone prints what --help and --version ask for.
    if (!group.is_root() && !std::freopen("/dev/null", "w", stdout)) return zox_mip::kExitFailed;
    options = zox_mip::parse_options(argc, argv, "zox-mip-mpi");
    if (!options) return zox_mip::kExitDone;
    check_options(*options);
  } catch (const zox_mip::Failure& failure) {
    return group.is_root() ? complain(failure.what(), failure.status) : failure.status;
  }
  watch(group);
  try {
    make_pictures(group, std::move(*options));
    return zox_mip::kExitDone;
  } catch (const GroupFailure& failure) {
    return group.is_root() ? complain(failure.what(), zox_mip::kExitFailed) : zox_mip::kExitFailed;
  } catch (const std::bad_alloc&) {
    return abandon(group, "There is not enough memory.");
  } catch (const std::exception& error) {
    return abandon(group, error.what());
  }
}

}  // namespace
}  // namespace zox_mip_mpi

int main(int argc, char** argv) {
  // Of a rank's threads the first alone calls MPI.
  int given = MPI_THREAD_SINGLE;
  MPI_Init_thread(&argc, &argv, MPI_THREAD_FUNNELED, &given);
  const int status = zox_mip_mpi::run(zox_mip_mpi::Group(MPI_COMM_WORLD), argc, argv);
  MPI_Finalize();
  return status;
}
