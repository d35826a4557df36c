// Writes JSON. Names are given by the program; texts may hold any bytes.
#pragma once

#include <concepts>
#include <span>
#include <string>
#include <string_view>

namespace zox::view {

// `text` as a JSON string, quotes included. Bytes that are not UTF-8 become U+FFFD.
std::string json_string(std::string_view text);

// The shortest text that reads back as `number`; null for what JSON has no number for.
std::string json_number(double number);
std::string json_number(std::integral auto number) { return std::to_string(number); }

template <class Number>
std::string json_list(std::span<const Number> numbers) {
  std::string list = "[";
  for (const Number number : numbers) {
    if (list.size() > 1) list += ',';
    list += json_number(number);
  }
  return list + "]";
}

class JsonObject {
 public:
  // `value` is JSON already.
  JsonObject& raw(std::string_view name, std::string_view value);
  JsonObject& text(std::string_view name, std::string_view value) { return raw(name, json_string(value)); }
  template <class Number>
  JsonObject& number(std::string_view name, Number value) {
    return raw(name, json_number(value));
  }
  JsonObject& flag(std::string_view name, bool value) { return raw(name, value ? "true" : "false"); }
  template <class Number, size_t count>
  JsonObject& list(std::string_view name, const Number (&numbers)[count]) {
    return raw(name, json_list(std::span<const Number>(numbers)));
  }
  std::string str() const { return "{" + fields_ + "}"; }

 private:
  std::string fields_;
};

}  // namespace zox::view
