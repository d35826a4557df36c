// What kernels spend their time on: each beside itself with its loads, or its arithmetic, left out. Rows
// of a table, ns a sample.
#include "bounds.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "output_planes.h"
#include "ray_casters.h"
#include "timing.h"
#include "views.h"

namespace bench {
namespace {

struct Options {
  std::string view = "oblique", load = "cold";
  int edge = 256, rounds = 9;
};

const RayCaster& caster_of(const char* operation) {
  return *std::find_if(std::begin(kRayCasters), std::end(kRayCasters),
                       [&](const RayCaster& caster) { return !std::strcmp(caster.name, operation); });
}

// Medians of rounds in which all parts run in turn, ns a sample.
std::vector<double> time_parts(const Volume& volume, std::vector<Batch>& batches,
                               const std::vector<zox::RayCast>& parts, const Options& options) {
  std::vector<std::vector<double>> ns(parts.size());
  int64_t samples = 0;
  for (const Batch& batch : batches) samples += batch.samples();
  for (int round = 0; round < options.rounds; ++round)
    for (std::size_t p = 0; p < parts.size(); ++p) {
      const std::size_t part = (p + round) % parts.size();
      const auto cast = [&] {
        for (const Batch& batch : batches) parts[part](&volume.record, &batch.record);
      };
      if (options.load == "cold")
        evict(volume);
      else
        cast();
      const double start = cpu_seconds();
      cast();
      ns[part].push_back((cpu_seconds() - start) * 1e9 / static_cast<double>(samples));
    }
  std::vector<double> medians;
  for (const auto& each : ns) medians.push_back(median(each));
  return medians;
}

void print_row(const Bounds& bounds, const char* set, const Options& options) {
  const RayCaster& caster = caster_of(bounds.operation);
  static Volume volume;
  fill_volume(volume, caster.blocked ? "bricks" : "packed", caster.element, {options.edge, options.edge});
  std::vector<Batch> batches = make_batches(volume, options.view, options.load);
  int32_t longest = 1;
  for (const Batch& batch : batches) longest = std::max(longest, batch.longest());
  Planes planes(longest, 64 * bytes_per_sample(caster.element) + 64);
  for (Batch& batch : batches) batch.record.planes = planes.pointers.data();
  const auto ns =
      time_parts(volume, batches,
                 {caster.reference, bounds.whole, bounds.walk, bounds.loads, bounds.arithmetic}, options);
  std::printf("| %s | %s | %.3g |", bounds.operation, set, ns[0]);
  for (std::size_t part = 1; part < ns.size(); ++part)
    std::printf(" %.3g (%.2f) |", ns[part], ns[0] / ns[part]);
  std::puts("");
  std::fflush(stdout);
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  bench::Options options;
  CLI::App app("Times kernels with parts of their work left out.");
  app.add_option("--view", options.view, "of the rays")
      ->check(CLI::IsMember({"z", "x", "oblique", "perspective"}))
      ->capture_default_str();
  app.add_option("--load", options.load, "what the caches hold of the voxels before a run")
      ->check(CLI::IsMember({"cached", "cold"}))
      ->capture_default_str();
  app.add_option("--size", options.edge, "edge of the volume")
      ->check(CLI::IsMember({64, 128, 256, 512}))
      ->capture_default_str();
  app.add_option("--rounds", options.rounds, "runs of each part")
      ->check(CLI::Range(1, 1000))
      ->capture_default_str();
  CLI11_PARSE(app, argc, argv);
  std::puts("| operation | set | scalar | whole | walk | walk and loads | walk and arithmetic |");
  std::puts("|---|---|---|---|---|---|---|");
  const zox::Operations* const sets[] = {&zox::avx2::kOperations, &zox::avx512::kOperations};
  const bench::Bounds* const lists[] = {bench::bounds_avx2, bench::bounds_avx512};
  for (int set = 0; set < 2; ++set)
    if (sets[set]->supported())
      for (const bench::Bounds* row = lists[set]; row->operation; ++row)
        bench::print_row(*row, sets[set]->name, options);
}
