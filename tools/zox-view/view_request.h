// What the page asks a view for. A message is fields as in the query of an address:
//   do=frame&n=7&width=768&height=768&azimuth=30&as=jpeg
// and so is the part of the page's address that brings a view back.
#pragma once

#include <zox_render.h>

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zox::view {

// A message that cannot be answered; what() tells the user why.
struct Refusal : std::runtime_error {
  using std::runtime_error::runtime_error;
};

using Fields = std::map<std::string, std::string, std::less<>>;

// Throws Refusal on a field without a name, a name given twice, a broken %-code and too many fields.
Fields parse_fields(std::string_view text);

struct FrameRequest {
  uint32_t number = 0;
  zox_render_view view;
  int32_t layout = ZOX_RENDER_AUTO;
  int quality = 0;  // of JPEG, 1 to 100; 0: PNG
};

// Fields that are not there have the library's defaults. Throws Refusal on a field that no frame has
// and on values that are not of a field's kind; what is out of a field's range the library refuses.
FrameRequest parse_frame(const Fields& fields);

// A pixel of the picture that was asked for last.
struct PickRequest {
  uint32_t number = 0;
  int column = 0;
  int row = 0;
};

PickRequest parse_pick(const Fields& fields);

// A field's number from 0 to 2^32 - 1.
uint32_t parse_number(const Fields& fields);

}  // namespace zox::view
