// The words of the command line, each judged on its own. All throw Failure with a sentence that names
// the option.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "exit_failure.h"
#include "options.h"

namespace zox_mip {

// `count` finite numbers with `separator` between them.
std::optional<std::vector<double>> parse_numbers(const std::string& text, char separator, size_t count);

// A number from `least` to `most`; `what` describes it in the sentence.
double number_word(const std::string& option, const std::string& text, double least, double most,
                   const std::string& what);
int whole_word(const std::string& option, const std::string& text, int least, int most,
               const std::string& what);

template <class Choice>
Choice choice_word(const std::string& option, const std::map<std::string, Choice>& choices,
                   const std::string& text) {
  if (const auto chosen = choices.find(text); chosen != choices.end()) return chosen->second;
  std::string names;
  for (const auto& [name, choice] : choices) names += (names.empty() ? "" : " or ") + name;
  reject_usage(option + " takes " + names + ", not '" + text + "'.");
}

NamedView view_word(const std::string& text);
void take_size(const std::string& text, Options& options);
void take_memory(const std::string& text, Options& options);
void take_window(const std::string& text, Options& options);
void take_spacing(const std::string& text, Options& options);
void take_center(const std::string& text, Options& options);
void take_depths(const std::string& slab, const std::string& depth_range, Options& options);

}  // namespace zox_mip
