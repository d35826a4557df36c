#include "view_request.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <span>

#include "server_limits.h"

namespace zox::view {
namespace {

constexpr size_t kMaxFields = 40;

[[noreturn]] void refuse(std::string_view name, std::string_view takes, std::string_view text) {
  throw Refusal(std::string(name) + " takes " + std::string(takes) + ", not '" + std::string(text) + "'.");
}

int hex_digit(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  throw Refusal("A message holds a broken %-code.");
}

std::string decoded(std::string_view text) {
  std::string plain;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      plain += text[i] == '+' ? ' ' : text[i];
      continue;
    }
    if (i + 2 >= text.size()) throw Refusal("A message holds a broken %-code.");
    plain += static_cast<char>(hex_digit(text[i + 1]) * 16 + hex_digit(text[i + 2]));
    i += 2;
  }
  return plain;
}

template <class Number>
Number parse(std::string_view name, std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  bool good = error == std::errc() && end == text.data() + text.size();
  if constexpr (std::is_floating_point_v<Number>) good = good && std::isfinite(number);
  if (!good) refuse(name, "a number", text);
  return number;
}

void parse_all(std::string_view name, std::string_view text, std::span<double> numbers) {
  const std::string_view whole = text;
  for (size_t i = 0; i < numbers.size(); ++i) {
    const size_t comma = text.find(',');
    if ((comma == std::string_view::npos) != (i + 1 == numbers.size()))
      refuse(name, std::to_string(numbers.size()) + " numbers", whole);
    numbers[i] = parse<double>(name, text.substr(0, comma));
    text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 1);
  }
}

int32_t parse_side(std::string_view name, std::string_view text) {
  const int32_t side = parse<int32_t>(name, text);
  if (side < 1 || side > kMaxSide) refuse(name, "1 to " + std::to_string(kMaxSide) + " pixels", text);
  return side;
}

using Names = std::map<std::string_view, int32_t>;
const Names kProjections = {{"perspective", ZOX_RENDER_PERSPECTIVE},
                            {"orthographic", ZOX_RENDER_ORTHOGRAPHIC}};
const Names kInterpolations = {{"trilinear", ZOX_RENDER_TRILINEAR}, {"nearest", ZOX_RENDER_NEAREST}};
const Names kReductions = {{"maximum", ZOX_RENDER_MAXIMUM},
                           {"minimum", ZOX_RENDER_MINIMUM},
                           {"mean", ZOX_RENDER_MEAN},
                           {"magnitude", ZOX_RENDER_LARGEST_MAGNITUDE}};
const Names kLayouts = {
    {"auto", ZOX_RENDER_AUTO}, {"bricks", ZOX_RENDER_BRICKS}, {"stack", ZOX_RENDER_STACK}};
const Names kQualities = {{"png", 0}, {"jpeg", 85}};

int32_t parse_choice(std::string_view name, std::string_view text, const Names& names) {
  const auto found = names.find(text);
  if (found != names.end()) return found->second;
  std::string all;
  for (const auto& [choice, value] : names) all += (all.empty() ? "" : " or ") + std::string(choice);
  refuse(name, all, text);
}

using Setter = void (*)(FrameRequest& frame, std::string_view name, std::string_view text);

template <double zox_render_view::*field>
void set_number(FrameRequest& frame, std::string_view name, std::string_view text) {
  frame.view.*field = parse<double>(name, text);
}
template <int32_t zox_render_view::*field>
void set_side(FrameRequest& frame, std::string_view name, std::string_view text) {
  frame.view.*field = parse_side(name, text);
}
template <int32_t zox_render_view::*field, const Names& names>
void set_choice(FrameRequest& frame, std::string_view name, std::string_view text) {
  frame.view.*field = parse_choice(name, text, names);
}
template <double zox_render_view::*first, double zox_render_view::*second>
void set_pair(FrameRequest& frame, std::string_view name, std::string_view text) {
  double pair[2];
  parse_all(name, text, pair);
  frame.view.*first = pair[0];
  frame.view.*second = pair[1];
}
void set_center(FrameRequest& frame, std::string_view name, std::string_view text) {
  parse_all(name, text, frame.view.center);
  frame.view.use_center = 1;
}

const std::map<std::string_view, Setter> kSetters = {
    {"do", [](FrameRequest&, std::string_view, std::string_view) {}},
    {"n", [](FrameRequest& frame, std::string_view name,
             std::string_view text) { frame.number = parse<uint32_t>(name, text); }},
    {"width", set_side<&zox_render_view::width>},
    {"height", set_side<&zox_render_view::height>},
    {"azimuth", set_number<&zox_render_view::azimuth>},
    {"elevation", set_number<&zox_render_view::elevation>},
    {"roll", set_number<&zox_render_view::roll>},
    {"projection", set_choice<&zox_render_view::projection, kProjections>},
    {"field", set_number<&zox_render_view::field_of_view>},
    {"zoom", set_number<&zox_render_view::zoom>},
    {"center", set_center},
    {"step", set_number<&zox_render_view::step>},
    {"interpolation", set_choice<&zox_render_view::interpolation, kInterpolations>},
    {"reduction", set_choice<&zox_render_view::reduction, kReductions>},
    {"slab", set_pair<&zox_render_view::slab_near, &zox_render_view::slab_far>},
    {"window", set_pair<&zox_render_view::window_center, &zox_render_view::window_width>},
    {"layout", [](FrameRequest& frame, std::string_view name,
                  std::string_view text) { frame.layout = parse_choice(name, text, kLayouts); }},
    {"as", [](FrameRequest& frame, std::string_view name,
              std::string_view text) { frame.quality = parse_choice(name, text, kQualities); }},
};

}  // namespace

Fields parse_fields(std::string_view text) {
  Fields fields;
  while (!text.empty()) {
    const std::string_view field = text.substr(0, text.find('&'));
    text.remove_prefix(std::min(field.size() + 1, text.size()));
    const size_t equals = field.find('=');
    if (equals == 0 || equals == std::string_view::npos)
      throw Refusal("A message is made of NAME=VALUE with & between them.");
    const auto [place, fresh] =
        fields.emplace(decoded(field.substr(0, equals)), decoded(field.substr(equals + 1)));
    if (!fresh) throw Refusal("A message gives " + place->first + " twice.");
    if (fields.size() > kMaxFields) throw Refusal("A message has too many fields.");
  }
  return fields;
}

FrameRequest parse_frame(const Fields& fields) {
  FrameRequest frame;
  zox_render_view_init(&frame.view);
  for (const auto& [name, text] : fields) {
    const auto setter = kSetters.find(name);
    if (setter == kSetters.end()) throw Refusal("No frame is asked for with " + name + ".");
    setter->second(frame, name, text);
  }
  return frame;
}

PickRequest parse_pick(const Fields& fields) {
  PickRequest pick;
  for (const auto& [name, text] : fields) {
    if (name == "n")
      pick.number = parse<uint32_t>(name, text);
    else if (name == "x")
      pick.column = parse<int>(name, text);
    else if (name == "y")
      pick.row = parse<int>(name, text);
    else if (name != "do")
      throw Refusal("No pixel is asked for with " + name + ".");
  }
  return pick;
}

uint32_t parse_number(const Fields& fields) {
  const auto found = fields.find("n");
  return found == fields.end() ? 0 : parse<uint32_t>("n", found->second);
}

}  // namespace zox::view
