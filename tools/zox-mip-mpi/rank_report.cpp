#include "rank_report.h"

#include <sys/resource.h>

#include <cstdio>
#include <string>
#include <vector>

#include "output.h"

namespace zox_mip_mpi {
namespace {

std::string list_of(const std::vector<int64_t>& numbers) {
  std::string text;
  for (const int64_t number : numbers) text.append(text.empty() ? "[" : ",").append(std::to_string(number));
  return text + "]";
}

// A number of every rank, at the root.
std::vector<int64_t> gather(const Group& group, int64_t number) {
  std::vector<int64_t> all(static_cast<size_t>(group.size()));
  MPI_Gather(&number, 1, MPI_INT64_T, all.data(), 1, MPI_INT64_T, 0, group.communicator());
  return all;
}

}  // namespace

void report(const Group& group, const SpreadVolume& volume, const zox_mip::Options& options,
            const Totals& totals) {
  const std::vector<int64_t> voxels = gather(group, static_cast<int64_t>(volume.voxels()));
  const std::vector<int64_t> cast = gather(group, totals.cast);
  rusage used{};
  getrusage(RUSAGE_SELF, &used);
  const std::vector<int64_t> resident = gather(group, int64_t{1024} * used.ru_maxrss);
  if (!group.is_root()) return;
  std::FILE* to = options.output == zox::output::kStandardOutput ? stderr : stdout;
  if (options.stats)
    std::fprintf(to,
                 "{\"ranks\":%d,\"samples\":%lld,\"samples_cast_by_rank\":%s,\"voxels_by_rank\":%s,"
                 "\"resident_bytes_by_rank\":%s,\"reduced_bytes\":%lld,"
                 "\"seconds_reading\":%.6f,\"seconds_volume\":%.6f,\"seconds_rendering\":%.6f,"
                 "\"processor_seconds_volume\":%.6f,\"processor_seconds_rendering\":%.6f}\n",
                 group.size(), static_cast<long long>(totals.samples), list_of(cast).c_str(),
                 list_of(voxels).c_str(), list_of(resident).c_str(), static_cast<long long>(totals.reduced),
                 totals.read.wall, totals.volume.wall, totals.render.wall, totals.volume.processors,
                 totals.render.processors);
  else if (!options.quiet)
    std::fprintf(to, "%d %s, %.1f million samples in %.2f s\n", group.size(),
                 group.size() == 1 ? "rank" : "ranks", static_cast<double>(totals.samples) * 1e-6,
                 totals.render.wall);
}

}  // namespace zox_mip_mpi
