// What is read from the network, without one.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "guard.h"
#include "json.h"
#include "view_request.h"

namespace zox::view {
namespace {

TEST(Messages, FieldsAreDecoded) {
  const Fields fields = parse_fields("a=1&b=x%20y+z%26&c=");
  EXPECT_EQ(fields, (Fields{{"a", "1"}, {"b", "x y z&"}, {"c", ""}}));
  EXPECT_TRUE(parse_fields("").empty());
  for (const char* text : {"a", "=", "=1", "a=1&a=2", "a=%", "a=%1", "a=%g0", "a=1&&b=2", "a=1&b"})
    EXPECT_THROW(parse_fields(text), Refusal) << text;
}

TEST(Messages, FrameHasWhatIsAsked) {
  const FrameRequest frame = parse_frame(parse_fields(
      "do=frame&n=7&width=20&height=4096&azimuth=-30.5&elevation=12&roll=3&projection=orthographic"
      "&field=20&zoom=1.5&center=1,-2,3e1&step=0.25&interpolation=nearest&reduction=magnitude"
      "&slab=-5,6&window=40,400&layout=stack&as=png"));
  EXPECT_EQ(frame.number, 7u);
  EXPECT_EQ(frame.view.width, 20);
  EXPECT_EQ(frame.view.height, 4096);
  EXPECT_EQ(frame.view.azimuth, -30.5);
  EXPECT_EQ(frame.view.elevation, 12);
  EXPECT_EQ(frame.view.roll, 3);
  EXPECT_EQ(frame.view.projection, ZOX_RENDER_ORTHOGRAPHIC);
  EXPECT_EQ(frame.view.field_of_view, 20);
  EXPECT_EQ(frame.view.zoom, 1.5);
  EXPECT_EQ(frame.view.use_center, 1);
  EXPECT_EQ(frame.view.center[0], 1);
  EXPECT_EQ(frame.view.center[1], -2);
  EXPECT_EQ(frame.view.center[2], 30);
  EXPECT_EQ(frame.view.step, 0.25);
  EXPECT_EQ(frame.view.interpolation, ZOX_RENDER_NEAREST);
  EXPECT_EQ(frame.view.reduction, ZOX_RENDER_LARGEST_MAGNITUDE);
  EXPECT_EQ(frame.view.slab_near, -5);
  EXPECT_EQ(frame.view.slab_far, 6);
  EXPECT_EQ(frame.view.window_center, 40);
  EXPECT_EQ(frame.view.window_width, 400);
  EXPECT_EQ(frame.layout, ZOX_RENDER_STACK);
  EXPECT_EQ(frame.quality, 0);
}

TEST(Messages, FrameWithoutFieldsIsTheLibrarys) {
  zox_render_view view;
  zox_render_view_init(&view);
  const FrameRequest frame = parse_frame({});
  EXPECT_EQ(frame.view.width, view.width);
  EXPECT_EQ(frame.view.slab_near, view.slab_near);
  EXPECT_EQ(frame.view.use_center, 0);
  EXPECT_EQ(frame.view.skip, 1);
}

TEST(Messages, WhatIsNoFrameIsRefused) {
  for (const char* text :
       {"width=0",   "width=4097", "width=1.5",   "width= 1",       "width=1x",   "zoom=inf",
        "zoom=nan",  "zoom=1e999", "zoom=",       "zoom=0x1",       "center=1,2", "center=1,2,3,4",
        "center=,,", "slab=1",     "window=1;2",  "layout=blocked", "as=gif",     "projection=0",
        "skip=0",    "n=-1",       "n=4294967296"})
    EXPECT_THROW(parse_frame(parse_fields(text)), Refusal) << text;
  for (const char* text : {"x=1.5", "y=", "z=1", "n=a"})
    EXPECT_THROW(parse_pick(parse_fields(text)), Refusal) << text;
}

TEST(Messages, RandomTextIsParsedOrRefused) {
  std::mt19937 draw(1);
  const std::string letters = "&=%0123456789abcdefnwithoz,.-+ \xff";
  for (int i = 0; i < 200000; ++i) {
    std::string text;
    for (size_t left = draw() % 40; left > 0; --left) text += letters[draw() % letters.size()];
    try {
      const Fields fields = parse_fields(text);
      EXPECT_LE(fields.size(), 40u);
      EXPECT_TRUE(std::isfinite(parse_frame(fields).view.zoom));
    } catch (const Refusal& refusal) {
      EXPECT_NE(std::string(refusal.what()), "");
    }
  }
}

TEST(Guard, TokensAreRandom) {
  const std::string token = make_token();
  EXPECT_EQ(token.size(), 32u);
  EXPECT_EQ(token.find_first_not_of("0123456789abcdef"), std::string::npos);
  EXPECT_NE(token, make_token());
}

TEST(Guard, ElsewhereThanOnLoopbackNumbersAndTheMachinesNameAreHosts) {
  Guard guard{"t", false, "server"};
  for (const char* host : {"10.0.0.5", "10.0.0.5:80", "[fe80::1]:80", "server", "server:99", "localhost"})
    EXPECT_EQ(guard.judge({"GET", "/t/", host, "", false}).give, Verdict::Give::kPage) << host;
  for (const char* host :
       {"", "example.com", "server.example.com", "10.0.0.5.example.com", "10.0.0", "[10.0.0.5]"})
    EXPECT_EQ(guard.judge({"GET", "/t/", host, "", false}).status, 403u) << host;
  guard.loopback = true;
  for (const char* host : {"10.0.0.5", "server"})
    EXPECT_EQ(guard.judge({"GET", "/t/", host, "", false}).status, 403u) << host;
}

TEST(Guard, QueriesReachTheView) {
  const Guard guard{"t"};
  const auto judge = [&](const char* target) {
    return guard.judge({"GET", target, "localhost", "http://localhost", true});
  };
  EXPECT_EQ(judge("/t/view").query, "");
  EXPECT_EQ(judge("/t/view?").query, "");
  EXPECT_EQ(judge("/t/view?file=a/b?c").query, "file=a/b?c");
  EXPECT_EQ(judge("/t/view").give, Verdict::Give::kView);
  EXPECT_EQ(judge("/t/").status, 404u);
}

TEST(Json, TextsAreEscaped) {
  EXPECT_EQ(json_string("a\"\\\n\x1f\x7fz"), "\"a\\\"\\\\\\u000a\\u001f\x7fz\"");
  EXPECT_EQ(json_string("\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80"), "\"\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80\"");
  // Bytes that are no UTF-8: alone, cut short, overlong, a surrogate, beyond the last character.
  for (const char* bytes : {"\xff", "\xc3", "\xc0", "\xf5"})
    EXPECT_EQ(json_string(bytes), "\"\xef\xbf\xbd\"");
  for (const char* bytes : {"\xe0\x80\x80", "\xed\xa0\x80"})
    EXPECT_EQ(json_string(bytes), "\"\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\"");
}

TEST(Json, NumbersAreShortAndFinite) {
  EXPECT_EQ(json_number(0.1), "0.1");
  EXPECT_EQ(json_number(-1e300), "-1e+300");
  EXPECT_EQ(json_number(INFINITY), "null");
  EXPECT_EQ(json_number(NAN), "null");
  EXPECT_EQ(JsonObject().text("a", "b").number("c", 1).flag("d", true).list("e", {1.5, 2.0}).str(),
            R"({"a":"b","c":1,"d":true,"e":[1.5,2]})");
}

}  // namespace
}  // namespace zox::view
