#include "words.h"

#include <display/presets.h>

#include <charconv>
#include <cmath>
#include <string_view>

namespace zox_mip {
namespace {

constexpr int kMaxPicture = 8192;

template <class Number>
std::optional<Number> parse_number(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if constexpr (std::is_floating_point_v<Number>)
    if (!std::isfinite(number)) return std::nullopt;
  return number;
}

std::string lower(std::string text) {
  for (char& letter : text)
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  return text;
}

}  // namespace

std::optional<std::vector<double>> parse_numbers(const std::string& text, char separator, size_t count) {
  std::vector<double> numbers;
  for (size_t begin = 0; begin <= text.size();) {
    const size_t end = std::min(text.find(separator, begin), text.size());
    const auto number = parse_number<double>(std::string_view(text).substr(begin, end - begin));
    if (!number) return std::nullopt;
    numbers.push_back(*number);
    begin = end + 1;
  }
  if (numbers.size() != count) return std::nullopt;
  return numbers;
}

double number_word(const std::string& option, const std::string& text, double least, double most,
                   const std::string& what) {
  const auto number = parse_number<double>(text);
  if (!number || *number < least || *number > most)
    reject_usage(option + " takes " + what + ", not '" + text + "'.");
  return *number;
}

int whole_word(const std::string& option, const std::string& text, int least, int most,
               const std::string& what) {
  const auto number = parse_number<int>(text);
  if (!number || *number < least || *number > most)
    reject_usage(option + " takes " + what + " from " + std::to_string(least) + " to " +
                 std::to_string(most) + ", not '" + text + "'.");
  return *number;
}

NamedView view_word(const std::string& text) {
  zox_render_view view;
  zox_render_view_init(&view);
  if (zox_render_view_by_name(&view, text.c_str()) == ZOX_RENDER_OK)
    return {lower(text), view.azimuth, view.elevation};
  const auto angles = parse_numbers(text, ',', 2);
  if (!angles || std::abs((*angles)[0]) > 360 || std::abs((*angles)[1]) > 90)
    reject_usage(
        "--view takes anterior (front, coronal), posterior (back), left (sagittal), right, superior (top, "
        "axial), inferior (bottom) or AZIMUTH,ELEVATION in degrees (-360 to 360, -90 to 90), not '" +
        text + "'.");
  return {text, (*angles)[0], (*angles)[1]};
}

void take_size(const std::string& text, Options& options) {
  const auto size = parse_numbers(text, 'x', 2);
  for (const double side : size.value_or(std::vector<double>{0}))
    if (side < 1 || side > kMaxPicture || side != std::floor(side))
      reject_usage("--size takes WIDTHxHEIGHT, each 1 to " + std::to_string(kMaxPicture) + ", not '" + text +
                   "'.");
  options.view.width = static_cast<int32_t>((*size)[0]);
  options.view.height = static_cast<int32_t>((*size)[1]);
}

// A number of bytes, or of 1024 (K), 1024 * 1024 (M) or 1024 * 1024 * 1024 (G) of them.
void take_memory(const std::string& text, Options& options) {
  if (text.empty()) return;
  const std::string units = "KMG";
  const size_t unit = units.find(text.back());
  const std::string digits = unit == std::string::npos ? text : text.substr(0, text.size() - 1);
  const auto number = parse_numbers(digits, ',', 1);
  const double bytes =
      number ? std::ldexp((*number)[0], unit == std::string::npos ? 0 : 10 * (int(unit) + 1)) : 0;
  if (!(bytes >= 1) || bytes > 1e15)
    reject_usage("--memory takes a number of bytes such as 800M or 2G, not '" + text + "'.");
  options.memory = static_cast<uint64_t>(bytes);
}

void take_window(const std::string& text, Options& options) {
  options.window_of_file = text == "file";
  if (text.empty() || options.window_of_file) return;
  if (const auto preset = zox::display::preset(text)) {
    options.view.window_center = preset->center;
    options.view.window_width = preset->width;
    return;
  }
  const auto window = parse_numbers(text, ',', 2);
  if (!window || (*window)[1] <= 0)
    reject_usage("--window takes CENTER,WIDTH with a width above 0, a preset's name, or 'file', not '" +
                 text + "'.");
  options.view.window_center = (*window)[0];
  options.view.window_width = (*window)[1];
}

void take_center(const std::string& text, Options& options) {
  if (text.empty()) return;
  const auto center = parse_numbers(text, ',', 3);
  if (!center) reject_usage("--center takes X,Y,Z in millimetres, not '" + text + "'.");
  options.view.use_center = 1;
  for (size_t axis = 0; axis < 3; ++axis) options.view.center[axis] = (*center)[axis];
}

void take_spacing(const std::string& text, Options& options) {
  if (text.empty()) return;
  const auto spacing = parse_numbers(text, ',', 3);
  for (const double length : spacing.value_or(std::vector<double>{0}))
    if (length < 1e-9 || length > 1e6)
      reject_usage("--spacing takes X,Y,Z in millimetres, 1e-9 to 1e6 each, not '" + text + "'.");
  options.spacing = {(*spacing)[0], (*spacing)[1], (*spacing)[2]};
}

void take_depths(const std::string& slab, const std::string& depth_range, Options& options) {
  if (!slab.empty() && !depth_range.empty())
    reject_usage("--slab and --depth-range say the same thing twice: give one of them.");
  if (!slab.empty()) {
    const double thickness = number_word("--slab", slab, 0, 1e6, "a thickness of 0 mm or more");
    options.view.slab_near = -thickness / 2;
    options.view.slab_far = thickness / 2;
  }
  if (depth_range.empty()) return;
  const auto range = parse_numbers(depth_range, ',', 2);
  if (!range || (*range)[0] > (*range)[1])
    reject_usage("--depth-range takes NEAR,FAR in millimetres with NEAR not beyond FAR, not '" + depth_range +
                 "'.");
  options.view.slab_near = (*range)[0];
  options.view.slab_far = (*range)[1];
}

}  // namespace zox_mip
