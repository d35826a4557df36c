#include "report.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>

#include "exit_failure.h"
#include "text.h"

namespace zox_mip {
namespace {

std::string format(const char* pattern, ...) {
  char text[512];
  va_list arguments;
  va_start(arguments, pattern);
  const int length = std::vsnprintf(text, sizeof text, pattern, arguments);
  va_end(arguments);
  return std::string(text, static_cast<size_t>(std::min(length, 511)));
}

// Bytes of the UTF-8 character at `at`; 0 where there is none.
size_t character_bytes(const std::string& text, size_t at) {
  const auto byte = [&](size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
  const unsigned first = byte(at);
  if (first < 0x80) return 1;
  const size_t bytes = first >= 0xC2 && first < 0xE0 ? 2 : first >= 0xE0 && first < 0xF0 ? 3 : 4;
  if (first < 0xC2 || first > 0xF4) return 0;
  for (size_t i = 1; i < bytes; ++i)
    if ((byte(at + i) & 0xC0) != 0x80) return 0;
  const unsigned second = byte(at + 1);
  const bool too_long = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
  const bool no_character = (first == 0xED && second > 0x9F) || (first == 0xF4 && second > 0x8F);
  return too_long || no_character ? 0 : bytes;
}

// Names of files may be no text at all.
std::string json_text(const std::string& text) {
  std::string json = "\"";
  for (size_t at = 0; at < text.size();) {
    const size_t bytes = character_bytes(text, at);
    if (bytes == 0) {
      json += "\\ufffd";
    } else if (static_cast<unsigned char>(text[at]) < ' ') {
      json += format("\\u%04x", text[at]);
    } else {
      if (text[at] == '"' || text[at] == '\\') json += '\\';
      json.append(text, at, bytes);
    }
    at += std::max<size_t>(bytes, 1);
  }
  return json + '"';
}

const char* type_name(int32_t type) {
  switch (type) {
    case ZOX_RENDER_UINT8:
      return "8-bit unsigned";
    case ZOX_RENDER_INT8:
      return "8-bit signed";
    case ZOX_RENDER_UINT16:
      return "16-bit unsigned";
    case ZOX_RENDER_INT16:
      return "16-bit signed";
    case ZOX_RENDER_UINT32:
      return "32-bit unsigned";
    case ZOX_RENDER_INT32:
      return "32-bit signed";
    case ZOX_RENDER_FLOAT32:
      return "32-bit float";
    default:
      return "64-bit float";
  }
}

const char* layout_name(const zox_render_volume_info& info) {
  return info.layout == ZOX_RENDER_BRICKS ? "blocked" : "stack";
}

std::string volume_json(const Report& report) {
  const zox_render_volume_info& info = report.info;
  return format("\"size\":[%d,%d,%d],\"spacing\":[%.9g,%.9g,%.9g],", info.size[0], info.size[1], info.size[2],
                report.spacing[0], report.spacing[1], report.spacing[2]) +
         format("\"type\":\"%s\",\"bits\":%d,\"layout\":\"%s\",\"copied\":%s,\"regions\":%d,",
                type_name(report.type), info.bits, layout_name(info), info.copied ? "true" : "false",
                info.regions) +
         format("\"slope\":%.17g,\"intercept\":%.17g,\"exact\":%s,\"lowest\":%.17g,\"highest\":%.17g,",
                info.sample_slope, info.sample_intercept, info.exact ? "true" : "false", info.lowest,
                info.highest) +
         format("\"voxel_bytes\":%llu,\"bounds_bytes\":%llu",
                static_cast<unsigned long long>(info.voxel_bytes),
                static_cast<unsigned long long>(info.bounds_bytes));
}

std::string picture_json(const Report::Picture& picture) {
  const zox_render_stats& stats = picture.stats;
  return "{\"output\":" + json_text(picture.job.output) + ",\"view\":" + json_text(picture.job.view->name) +
         format(",\"frame\":%d,\"rays\":%lld,\"samples\":%lld,\"samples_cast\":%lld,", picture.job.frame,
                static_cast<long long>(stats.rays), static_cast<long long>(stats.samples),
                static_cast<long long>(stats.samples_cast)) +
         format("\"window\":[%.17g,%.17g],\"seconds\":%.6f,", stats.window_center, stats.window_width,
                stats.seconds) +
         format("\"seconds_bounds\":%.6f,\"seconds_cast\":%.6f,\"seconds_window\":%.6f}",
                stats.seconds_bounds, stats.seconds_cast, stats.seconds_window);
}

std::string picture_text(const Report::Picture& picture, const Options& options) {
  const zox_render_stats& stats = picture.stats;
  std::string name = zox::input::printable(picture.job.output);
  if (is_animation(options)) name += ", frame " + std::to_string(picture.job.frame);
  return name +
         format(": %d x %d, window %.6g,%.6g, %.1f million samples", options.view.width, options.view.height,
                stats.window_center, stats.window_width, static_cast<double>(stats.samples) * 1e-6) +
         format(" (%.1f taken) in %.2f s on %d thread%s\n", static_cast<double>(stats.samples_cast) * 1e-6,
                stats.seconds, stats.threads, stats.threads == 1 ? "" : "s");
}

}  // namespace

std::string report_text(const Report& report, const Options& options) {
  const zox_render_volume_info& info = report.info;
  std::string text =
      zox::input::printable(report.name) +
      format(": %d x %d x %d voxels of %.4g x %.4g x %.4g mm, %s, held %s", info.size[0], info.size[1],
             info.size[2], report.spacing[0], report.spacing[1], report.spacing[2], type_name(report.type),
             info.layout == ZOX_RENDER_BRICKS ? "in bricks" : "as slices");
  if (!info.exact)
    text +=
        format(", scaled to 16 bits: value = %.9g + %.9g * stored", info.sample_intercept, info.sample_slope);
  text += '\n';
  for (const Report::Picture& picture : report.pictures) text += picture_text(picture, options);
  return text;
}

namespace {

std::string report_json(const Report& report, const Options& options) {
  std::string json =
      "{\"volume\":" + json_text(report.name) + ',' + volume_json(report) +
      format(",\"width\":%d,\"height\":%d,\"threads\":%d,", options.view.width, options.view.height,
             options.threads) +
      format("\"seconds_reading\":%.6f,\"seconds_volume\":%.6f,", report.times.read, report.times.volume) +
      format("\"seconds_rendering\":%.6f,\"seconds_writing\":%.6f,\"pictures\":[", report.times.render,
             report.times.write);
  for (size_t i = 0; i < report.pictures.size(); ++i)
    json += std::string(i ? "," : "") + picture_json(report.pictures[i]);
  return json + "]}\n";
}

// A line of the table.
std::string line_of(const Outcome& outcome, int width) {
  std::string name = zox::input::printable(outcome.title);
  const std::string gap(static_cast<size_t>(width) - std::min<size_t>(name.size(), size_t(width)), ' ');
  if (!outcome.report) return name + gap + "  failed\n";
  const Report& report = *outcome.report;
  const std::string size =
      format("%d x %d x %d", report.info.size[0], report.info.size[1], report.info.size[2]);
  const std::string spacing =
      format("%.4g x %.4g x %.4g", report.spacing[0], report.spacing[1], report.spacing[2]);
  const Times& times = report.times;
  return name + gap +
         format("  %-20s  %-24s  %8zu  %7.2f\n", size.c_str(), spacing.c_str(), report.pictures.size(),
                times.read + times.volume + times.render + times.write);
}

}  // namespace

std::string outcome_json(const Outcome& outcome, const Options& options) {
  if (outcome.report) return report_json(*outcome.report, options);
  return "{\"volume\":" + json_text(outcome.title) + ",\"error\":" + json_text(outcome.failure) + "}\n";
}

size_t Summary::failed() const {
  return static_cast<size_t>(
      std::count_if(outcomes.begin(), outcomes.end(), [](const Outcome& one) { return !one.report; }));
}

size_t Summary::pictures() const {
  size_t pictures = 0;
  for (const Outcome& outcome : outcomes)
    if (outcome.report) pictures += outcome.report->pictures.size();
  return pictures;
}

std::string summary_text(const Summary& summary) {
  size_t width = 6;
  for (const Outcome& outcome : summary.outcomes) width = std::max(width, outcome.title.size());
  const int name_width = static_cast<int>(std::min<size_t>(width, 60));
  std::string text = format("\n%-*s  %-20s  %-24s  %8s  %7s\n", name_width, "volume", "voxels",
                            "spacing in mm", "pictures", "seconds");
  for (const Outcome& outcome : summary.outcomes) text += line_of(outcome, name_width);
  return text + format("%zu of %zu volumes shown, %zu pictures in %.2f s\n",
                       summary.outcomes.size() - summary.failed(), summary.outcomes.size(),
                       summary.pictures(), summary.seconds);
}

std::string summary_json(const Summary& summary) {
  return format("{\"volumes\":%zu,\"failed\":%zu,\"pictures\":%zu,\"seconds\":%.6f}\n",
                summary.outcomes.size(), summary.failed(), summary.pictures(), summary.seconds);
}

}  // namespace zox_mip
