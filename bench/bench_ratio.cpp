// Times every operation of every instruction set beside the scalar reference. One benchmark is one
// case; one iteration of it runs every contender once, in turn, so that whatever else the machine
// does meets all of them alike. Outputs are compared with the reference's before anything is timed.
#include <benchmark/benchmark.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <regex>

#include "timing.h"
#include "workload.h"

namespace bench {
namespace {

struct Options {
  std::string filter = ".";
  std::vector<std::string> sizes;
  std::vector<std::string> views, storages, loads;
  std::vector<std::string> sets = {"base", "avx2", "avx512"};
  int rounds = 5;
  bool quick = false;
  bool list = false;
  std::string json;
};

double seconds_of(const Workload& workload, const Contender& contender, int passes) {
  if (workload.evict) workload.evict();
  const double start = cpu_seconds();
  for (int pass = 0; pass < passes; ++pass)
    for (int i = 0; i < workload.batches; ++i) contender.run(i);
  return cpu_seconds() - start;
}

// The name of the first contender whose output is not the reference's; empty if there is none.
std::string first_wrong(const Workload& workload) {
  const std::span<std::byte> output = workload.output;
  for (int i = 0; i < workload.batches; ++i) {
    std::vector<std::byte> expected;
    for (const Contender& contender : workload.contenders) {
      std::memset(output.data(), 0xA5, output.size());
      if (contender.run(i) != 0) return contender.name;
      if (expected.empty()) expected.assign(output.begin(), output.end());
      if (!std::equal(output.begin(), output.end(), expected.begin())) return contender.name;
    }
  }
  return {};
}

// base over other, round by round.
double ratio(const std::vector<double>& base, const std::vector<double>& other) {
  std::vector<double> ratios(base.size());
  std::transform(base.begin(), base.end(), other.begin(), ratios.begin(), std::divides<>());
  return median(ratios);
}

void count(benchmark::State& state, const Workload& workload, int passes,
           const std::vector<std::vector<double>>& seconds) {
  const double samples = static_cast<double>(workload.samples) * passes;
  const bool has_lists = workload.contenders.size() > 1 && workload.contenders[1].name == "lists";
  for (std::size_t c = 0; c < seconds.size(); ++c) {
    const std::string& name = workload.contenders[c].name;
    state.counters[name + "_ns"] = median(seconds[c]) * 1e9 / samples;
    if (c > 0) state.counters[name + "_ratio"] = ratio(seconds[0], seconds[c]);
    if (c > 1 && has_lists) state.counters[name + "_lists_ratio"] = ratio(seconds[1], seconds[c]);
    for (std::size_t b = 1; b < c; ++b)
      if (workload.contenders[b].name == "before_" + name)
        state.counters[name + "_gain"] = ratio(seconds[b], seconds[c]);
  }
}

void run_case(benchmark::State& state, const Case& c, const Options& options) {
  const Workload workload = make_workload(c, options.sets);
  const std::string wrong = first_wrong(workload);
  if (!wrong.empty()) return state.SkipWithError((wrong + " differs from the reference").c_str());
  if (workload.samples == 0) return state.SkipWithError("no sample lies in the volume");

  // Long enough for the clock, and for the caches to be in the state that repetition brings.
  const double once = seconds_of(workload, workload.contenders[0], 1);
  const int passes = workload.evict ? 1 : std::clamp(static_cast<int>(2e-3 / once), 1, 10000);
  const std::size_t contenders = workload.contenders.size();
  std::vector<std::vector<double>> seconds(contenders);
  std::size_t first = 0;
  for (auto _ : state) {
    double total = 0;
    for (std::size_t i = 0; i < contenders; ++i) {
      const std::size_t turn = (first + i) % contenders;
      seconds[turn].push_back(seconds_of(workload, workload.contenders[turn], passes));
      total += seconds[turn].back();
    }
    ++first;
    state.SetIterationTime(total);
  }
  count(state, workload, passes, seconds);
}

// One row a case: ns a sample, and for each set the ratio to the reference and to the lists.
class Table : public benchmark::BenchmarkReporter {
 public:
  explicit Table(std::vector<std::string> sets) : sets_(std::move(sets)) {}

  bool ReportContext(const Context&) override {
    std::printf("%-68s %8s %8s", "ns a sample (x ratio to reference, to lists)", "scalar", "lists");
    for (const std::string& set : sets_) std::printf(" | %6s %12s", set.c_str(), "");
    std::puts("");
    return true;
  }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      const char* name = run.run_name.function_name.c_str();
      if (run.error_occurred) {
        std::fprintf(stderr, "%s: %s\n", name, run.error_message.c_str());
        failed = true;
        continue;
      }
      std::printf("%-68s", name);
      print_value(run, "reference_ns", " %8.3g", " %8s");
      print_value(run, "lists_ns", " %8.3g", " %8s");
      for (const std::string& set : sets_) {
        print_value(run, set + "_ns", " | %6.3g", " | %6s");
        print_value(run, set + "_ratio", " x%5.2f", " %6s");
        print_value(run, set + "_lists_ratio", " %5.2f", " %5s");
        print_value(run, set + "_gain", " gain %5.3f", "");
      }
      std::puts("");
    }
    std::fflush(stdout);
  }

  bool failed = false;

 private:
  static void print_value(const Run& run, const std::string& name, const char* format, const char* missing) {
    const auto found = run.counters.find(name);
    if (found == run.counters.end())
      std::printf(missing, "");
    else
      std::printf(format, found->second.value);
  }

  std::vector<std::string> sets_;
};

template <class Value>
bool wanted(const std::vector<Value>& list, const Value& value) {
  return list.empty() || std::count(list.begin(), list.end(), value) > 0;
}

int run(const Options& options, const char* program) {
  const std::regex filter(options.filter);
  int registered = 0;
  for (const Case& c : all_cases()) {
    if (!wanted(options.sizes, c.shape()) || !wanted(options.views, c.view) ||
        !wanted(options.loads, c.load) || !wanted(options.storages, c.storage) ||
        (options.quick && !c.quick) || !std::regex_search(c.name(), filter))
      continue;
    ++registered;
    if (options.list) std::puts(c.name().c_str());
    benchmark::RegisterBenchmark(c.name().c_str(),
                                 [c, options](benchmark::State& state) { run_case(state, c, options); })
        ->Iterations(options.rounds)
        ->UseManualTime();
  }
  if (registered == 0) {
    std::fprintf(stderr, "%s: no case matches\n", program);
    return 1;
  }
  if (options.list) return 0;
  std::vector<std::string> arguments = {program};
  if (!options.json.empty()) arguments.push_back("--benchmark_out=" + options.json);
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  int argc = static_cast<int>(pointers.size());
  benchmark::Initialize(&argc, pointers.data());
  Table table(options.sets);
  benchmark::RunSpecifiedBenchmarks(&table);
  return table.failed ? 1 : 0;
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  bench::Options options;
  CLI::App app("Times the operations of each instruction set beside the scalar reference.");
  app.add_option("--filter", options.filter, "regular expression on operation/size/view/storage/load");
  app.add_option("--size", options.sizes, "64, 256, 512, 512x300")->delimiter(',');
  app.add_option("--view", options.views, "z, x, oblique, falling, perspective")->delimiter(',');
  app.add_option("--storage", options.storages, "bricks, packed, 1region, 3regions, scattered")
      ->delimiter(',');
  app.add_option("--load", options.loads, "cached, warm, cold, ragged, short, rays1 to rays3, rays7; full")
      ->delimiter(',');
  app.add_option("--sets", options.sets, "base, avx2, avx512; before_base and so on")
      ->delimiter(',')
      ->check(CLI::IsMember({"base", "avx2", "avx512", "before_base", "before_avx2", "before_avx512"}));
  app.add_option("--rounds", options.rounds, "interleaved runs of each contender")
      ->check(CLI::Range(1, 1000))
      ->capture_default_str();
  app.add_flag("--quick", options.quick, "only the cases of the summary, at 256");
  app.add_flag("--list", options.list, "print the names of the cases, run none");
  app.add_option("--json", options.json, "also write the results to this file");
  CLI11_PARSE(app, argc, argv);
  try {
    return bench::run(options, argv[0]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
    return 1;
  }
}
