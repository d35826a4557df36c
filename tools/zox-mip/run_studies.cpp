#include "run_studies.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>

#include "output.h"
#include "pictures.h"
#include "progress.h"
#include "report.h"
#include "studies.h"
#include "text.h"

namespace zox_mip {
namespace {

using Clock = std::chrono::steady_clock;

void tell(const std::string& text, const Options& options) {
  std::fputs(text.c_str(), options.output == zox::output::kStandardOutput ? stderr : stdout);
  std::fflush(stdout);
}

// With the name of the study, where the sentence lacks it and there are others.
std::string named(const std::string& sentence, const Study& study, bool alone) {
  if (alone || study.files.empty()) return sentence;
  for (const std::string& file : {study.files[0], zox::input::printable(study.files[0])})
    if (sentence.starts_with(file + " ") || sentence.find("'" + file + "'") != std::string::npos)
      return sentence;
  return study.quoted_title() + ": " + sentence;
}

Outcome run_study(const Study& study, const Options& options, bool alone, Work& work) {
  Outcome outcome{study.title(), std::nullopt, {}};
  const auto failure = failure_of([&] { outcome.report = make_pictures(study, options, work); });
  work.clear();
  if (failure && alone) throw *failure;
  if (failure) {
    outcome.report.reset();
    outcome.failure = named(failure->what(), study, alone);
    complain(outcome.failure);
  }
  return outcome;
}

void tell_outcome(const Outcome& outcome, const Study& study, const Options& options, bool alone) {
  if (outcome.report && !options.quiet)
    for (const std::string& note : outcome.report->notes) complain(named(note, study, alone));
  if (options.stats)
    tell(outcome_json(outcome, options), options);
  else if (outcome.report && !options.quiet)
    tell(report_text(*outcome.report, options), options);
}

}  // namespace

void complain(const std::string& sentence) {
  std::fprintf(stderr, "zox-mip: %s\n", zox::input::printable(sentence).c_str());
}

ExitStatus make_pictures(const Options& options) {
  std::vector<Study> studies = find_studies(options);
  plan(studies, options);
  const bool alone = studies.size() == 1;
  const auto begin = Clock::now();
  Summary summary;
  Work work(!options.quiet && isatty(STDERR_FILENO) != 0, studies.size() * (studies[0].jobs.size() + 1));
  for (const Study& study : studies) {
    summary.outcomes.push_back(run_study(study, options, alone, work));
    tell_outcome(summary.outcomes.back(), study, options, alone);
    work.skip_to(summary.outcomes.size() * (study.jobs.size() + 1));
  }
  if (alone) return kExitDone;
  summary.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
  if (options.stats)
    tell(summary_json(summary), options);
  else if (!options.quiet)
    tell(summary_text(summary), options);
  return summary.failed() ? kExitFailed : kExitDone;
}

ExitStatus list_series(const Options& options) {
  if (options.inputs.empty()) reject_usage("The phantom has no series: name a folder of DICOM files.");
  const std::vector<Study> studies = find_studies(options);
  const bool alone = studies.size() == 1;
  ExitStatus status = kExitDone;
  for (const Study& study : studies) {
    std::vector<std::string> lines;
    const auto failure =
        failure_of([&] { lines = zox::input::list_series(study.files[0], read_options(study, options)); });
    if (failure && alone) throw *failure;
    if (failure) {
      complain(named(failure->what(), study, alone));
      status = kExitFailed;
      continue;
    }
    if (!alone) std::printf("%s\n", zox::input::printable(study.title()).c_str());
    for (const std::string& line : lines) std::printf("%s%s\n", alone ? "" : "  ", line.c_str());
    std::fflush(stdout);
  }
  return status;
}

}  // namespace zox_mip
