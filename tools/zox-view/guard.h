// Which requests are answered at all. A page of another site must not be able to drive the server,
// whatever names its author lets point here: the token in the address is a secret, the Host that the
// browser names must be this machine's, and the Origin, where the browser tells one, this page's.
#pragma once

#include <string>
#include <string_view>

namespace zox::view {

// 128 random bits as 32 hexadecimal digits. Throws std::system_error.
std::string make_token();

struct Request {
  std::string_view method;
  std::string_view target;  // path and query, as sent
  std::string_view host;
  std::string_view origin;  // empty: not sent
  bool upgrade = false;     // to a WebSocket
};

struct Verdict {
  enum class Give { kPage, kView, kRefusal } give = Give::kRefusal;
  unsigned status = 404;  // of a refusal
  std::string_view reason = "There is nothing here.";
  std::string_view query = {};  // of the target, for a view
};

struct Guard {
  std::string token;
  bool loopback = true;      // listens there only: other addresses are not accepted as Host
  std::string machine = {};  // a further name that is accepted as Host when not only on loopback

  Verdict judge(const Request& request) const;
};

}  // namespace zox::view
