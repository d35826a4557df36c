#include "contract_report.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace zox_check {
namespace {

constexpr int kPrintedPerKind = 3;

// One fputs a sentence, so that the sentences of several threads do not mix.
void print(const char* operation, const char* place, const char* text) {
  char line[640];
  std::snprintf(line, sizeof line, "zox_check: %s: %s%s.\n", operation, place, text);
  std::fputs(line, stderr);
}

}  // namespace

int Report::count(const char* format) {
  for (Kind& kind : kinds_) {
    if (kind.format == format) return ++kind.count;
  }
  kinds_.push_back({format, 1});
  return 1;
}

void Report::say(Where where, const char* format, ...) {
  if (count(format) > kPrintedPerKind) return;
  char place[64] = "";
  if (where.ray >= 0 && where.sample >= 0) {
    std::snprintf(place, sizeof place, "ray %d, sample %d: ", where.ray, where.sample);
  } else if (where.ray >= 0) {
    std::snprintf(place, sizeof place, "ray %d: ", where.ray);
  } else if (where.sample >= 0) {
    std::snprintf(place, sizeof place, "sample %d: ", where.sample);
  }
  char text[384];
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  print(operation_, place, text);
  const char* mode = std::getenv("ZOX_CHECK");
  if (mode && std::strcmp(mode, "abort") == 0) std::abort();
}

Report::~Report() {
  int kept_back = 0;
  for (const Kind& kind : kinds_) {
    if (kind.count > kPrintedPerKind) kept_back += kind.count - kPrintedPerKind;
  }
  if (kept_back == 0) return;
  char text[64];
  std::snprintf(text, sizeof text, "%d more of the kinds above", kept_back);
  print(operation_, "", text);
}

}  // namespace zox_check
