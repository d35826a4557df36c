#include "arrange.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <tuple>

namespace zox::input::dicom {
namespace {

// Slices nearer than this are at one place: positions are decimal texts.
constexpr double kSamePlace = 1e-3;
// Slices off their even places by no more than this share of the distance are even: a picture cannot
// show it, and texts of three decimals are off by as much.
constexpr double kEvenShare = 0.005;
// Sideways a slice may lie off the line through the first and the last by this share of a pixel.
constexpr double kSidewaysShare = 0.05;
// A gap so near to a whole number of usual ones is slices that are missing.
constexpr double kMissingShare = 0.1;

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.4g", value);
  return text;
}

std::string name_of(const Frame& frame) {
  std::string name = printable(std::filesystem::path(frame.path).filename().string());
  if (frame.index > 0) name += " (frame " + std::to_string(frame.index + 1) + ")";
  return name;
}

Vector normal_of(const Frame& frame) {
  const Vector n = cross(frame.along_row, frame.along_column);
  return n * (1 / std::sqrt(dot(n, n)));
}

struct Placed {
  double height;
  Frame frame;
};

std::vector<Placed> by_height(const std::vector<Frame>& frames) {
  const Vector normal = normal_of(frames[0]);
  std::vector<Placed> placed;
  for (const Frame& frame : frames) placed.push_back({height(frame, normal), frame});
  // Of slices at one place the first in the order of acquisition comes first.
  std::stable_sort(placed.begin(), placed.end(), [](const Placed& a, const Placed& b) {
    return std::tie(a.height, a.frame.instance_number) < std::tie(b.height, b.frame.instance_number);
  });
  return placed;
}

// Keeps one slice of each place.
std::vector<Placed> without_duplicates(std::vector<Placed> placed, std::vector<std::string>& notes) {
  std::vector<Placed> kept;
  size_t dropped = 0;
  std::string example;
  for (Placed& slice : placed) {
    if (kept.empty() || slice.height - kept.back().height > kSamePlace) {
      kept.push_back(std::move(slice));
      continue;
    }
    if (slice.frame.instance_number < kept.back().frame.instance_number) std::swap(slice, kept.back());
    if (dropped++ == 0)
      example = name_of(slice.frame) + " lies where " + name_of(kept.back().frame) + " does";
  }
  if (dropped == 1) notes.push_back(example + " and was left out.");
  if (dropped > 1)
    notes.push_back(std::to_string(dropped) +
                    " slices lie where others do and were left out; the first: " + example + ".");
  return kept;
}

double middle_gap(const std::vector<Placed>& placed) {
  std::vector<double> gaps;
  for (size_t i = 1; i < placed.size(); ++i) gaps.push_back(placed[i].height - placed[i - 1].height);
  const auto middle = gaps.begin() + static_cast<ptrdiff_t>((gaps.size() - 1) / 2);
  std::nth_element(gaps.begin(), middle, gaps.end());
  return *middle;
}

// Millimetres from slice to slice if they are even, else nothing.
std::optional<double> even_distance(const std::vector<Placed>& placed) {
  const double first = placed.front().height;
  const double apart = (placed.back().height - first) / static_cast<double>(placed.size() - 1);
  for (size_t i = 0; i < placed.size(); ++i)
    if (std::abs(placed[i].height - first - apart * static_cast<double>(i)) > kEvenShare * apart) return {};
  return apart;
}

struct Gap {
  std::string between;
  double size;
  long missing;  // slices; 0: the gap is no whole number of usual ones
};

// The gaps that are not the usual one.
std::vector<Gap> odd_gaps(const std::vector<Placed>& placed, double usual) {
  std::vector<Gap> odd;
  for (size_t i = 1; i < placed.size(); ++i) {
    const double size = placed[i].height - placed[i - 1].height;
    if (std::abs(size - usual) <= kEvenShare * usual) continue;
    const double times = size / usual;
    const bool whole = times > 1.5 && std::abs(times - std::round(times)) <= kMissingShare;
    odd.push_back({name_of(placed[i - 1].frame) + " and " + name_of(placed[i].frame), size,
                   whole ? std::lround(times) - 1 : 0});
  }
  return odd;
}

void tell_gaps(const std::vector<Placed>& placed, std::vector<std::string>& notes) {
  const double usual = middle_gap(placed);
  const std::vector<Gap> odd = odd_gaps(placed, usual);
  if (odd.empty()) return;  // small differences that add up
  const auto is_whole = [](const Gap& gap) { return gap.missing > 0; };
  const bool all_whole = std::all_of(odd.begin(), odd.end(), is_whole);
  // Where many are twice as wide the spacing has changed, and nothing is missing.
  if (all_whole && odd.size() * 4 <= placed.size()) {
    long missing = 0;
    for (const Gap& gap : odd) missing += gap.missing;
    notes.push_back(std::to_string(missing) + (missing == 1 ? " slice seems" : " slices seem") +
                    " to be missing, the first between " + odd[0].between +
                    "; the gap is rendered by what lies around it.");
    return;
  }
  notes.push_back("The slices are not evenly spaced (" + number(usual) + " mm as a rule): " + odd[0].between +
                  " are " + number(odd[0].size) + " mm apart" +
                  (odd.size() == 1 ? "." : ", and " + std::to_string(odd.size() - 1) + " more gaps differ."));
}

// What leads from a slice to the next along the stack, a millimetre of height.
Vector direction_of_stack(const std::vector<Placed>& placed, std::vector<std::string>& notes) {
  const Placed &first = placed.front(), &last = placed.back();
  const Vector slant = (last.frame.position - first.frame.position) * (1 / (last.height - first.height));
  const double pixel = std::min(first.frame.spacing[0], first.frame.spacing[1]);
  for (const Placed& slice : placed) {
    const Vector off = slice.frame.position - (first.frame.position + slant * (slice.height - first.height));
    const double sideways = std::sqrt(dot(off, off));
    if (sideways > kSidewaysShare * pixel)
      throw std::runtime_error(name_of(slice.frame) + " lies " + number(sideways) +
                               " mm beside the line of the other slices: they make no straight stack.");
  }
  const Vector normal = normal_of(first.frame);
  const Vector sideways = slant - normal;
  // What cannot be told from rounding, less than a share of a pixel over the whole stack, is no tilt.
  const double drift = std::sqrt(dot(sideways, sideways)) * (last.height - first.height);
  if (drift <= kSidewaysShare * pixel) return normal;
  notes.push_back("The slices are slanted by " +
                  number(std::atan(std::sqrt(dot(sideways, sideways))) * 180 / 3.14159265358979323846) +
                  " degrees (a tilted gantry); the picture allows for it.");
  return slant;
}

}  // namespace

double height(const Frame& frame, const Vector& normal) { return dot(frame.position, normal); }

std::optional<double> usual_distance(const Series& series) {
  std::vector<std::string> unheard;
  const std::vector<Placed> placed = without_duplicates(by_height(series.frames), unheard);
  if (placed.size() < 2) return {};
  return middle_gap(placed);
}

Arrangement arrange(const Series& series) {
  Arrangement result;
  std::vector<Placed> placed = without_duplicates(by_height(series.frames), result.notes);
  const Frame& first = placed.front().frame;
  result.origin = first.position;
  result.axes[0] = first.along_row * first.spacing[0];
  result.axes[1] = first.along_column * first.spacing[1];
  if (placed.size() < 2)
    throw std::runtime_error("It holds a single slice (" + name_of(first) + "), which is no volume.");
  const Vector slant = direction_of_stack(placed, result.notes);
  if (const std::optional<double> apart = even_distance(placed)) {
    result.axes[2] = slant * *apart;
  } else {
    tell_gaps(placed, result.notes);
    result.axes[2] = slant;
    // Positions count along axes[2], which a slant makes longer than the height.
    const double stretch = std::sqrt(dot(slant, slant));
    for (const Placed& slice : placed)
      result.positions.push_back((slice.height - placed.front().height) * stretch);
  }
  for (Placed& slice : placed) result.frames.push_back(std::move(slice.frame));
  return result;
}

}  // namespace zox::input::dicom
