#include "guard.h"

#include <arpa/inet.h>
#include <sys/random.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <system_error>

namespace zox::view {
namespace {

constexpr std::string_view kScheme = "http://";

// In a time that does not tell how many characters were right.
bool same_secret(std::string_view one, std::string_view other) {
  if (one.size() != other.size()) return false;
  unsigned differences = 0;
  for (size_t i = 0; i < one.size(); ++i) differences |= static_cast<unsigned>(one[i] ^ other[i]);
  return differences == 0;
}

// "name", "name:port" or "[address]:port" without its port; empty where it is none of these.
std::string_view without_port(std::string_view host) {
  const size_t from = host.starts_with('[') ? host.find(']') : 0;
  if (from == std::string_view::npos) return {};
  const size_t colon = host.find(':', from);
  if (colon == std::string_view::npos) return host;
  const std::string_view port = host.substr(colon + 1);
  const bool is_number = !port.empty() && port.size() <= 5 &&
                         std::all_of(port.begin(), port.end(), [](char c) { return c >= '0' && c <= '9'; });
  return is_number ? host.substr(0, colon) : std::string_view();
}

bool is_address(std::string_view name) {
  in6_addr address;
  if (name.starts_with('[') && name.ends_with(']'))
    return inet_pton(AF_INET6, std::string(name.substr(1, name.size() - 2)).c_str(), &address) == 1;
  return inet_pton(AF_INET, std::string(name).c_str(), &address) == 1;
}

// A number is never a name that somebody else lets point here. Ports are not compared: a tunnel's
// end has one of its own.
bool is_this_machine(std::string_view host, const Guard& guard) {
  const std::string_view name = without_port(host);
  if (name == "127.0.0.1" || name == "localhost" || name == "[::1]") return true;
  if (guard.loopback || name.empty()) return false;
  return name == guard.machine || is_address(name);
}

Verdict refuse(unsigned status, std::string_view reason) { return {Verdict::Give::kRefusal, status, reason}; }

}  // namespace

std::string make_token() {
  std::array<uint8_t, 16> bits;
  if (getrandom(bits.data(), bits.size(), 0) != static_cast<ssize_t>(bits.size()))
    throw std::system_error(errno, std::generic_category(), "no random bits for the address");
  std::string token;
  for (const uint8_t byte : bits) {
    token += "0123456789abcdef"[byte >> 4];
    token += "0123456789abcdef"[byte & 15];
  }
  return token;
}

Verdict Guard::judge(const Request& request) const {
  if (!is_this_machine(request.host, *this))
    return refuse(403, "The Host of this request is not this server's.");
  const bool same_origin =
      request.origin.starts_with(kScheme) && request.origin.substr(kScheme.size()) == request.host;
  if (request.origin.empty() ? request.upgrade : !same_origin)
    return refuse(403, "The Origin of this request is not this server's page.");
  if (request.method != "GET") return refuse(405, "Only GET is answered.");
  const std::string_view path = request.target.substr(0, request.target.find('?'));
  const size_t slash = path.find('/', 1);
  if (!path.starts_with('/') || slash == std::string_view::npos ||
      !same_secret(path.substr(1, slash - 1), token))
    return {};
  const std::string_view rest = path.substr(slash);
  if (rest == "/") return request.upgrade ? Verdict{} : Verdict{Verdict::Give::kPage, 200, ""};
  if (rest != "/view") return {};
  if (!request.upgrade) return refuse(426, "This address is for a WebSocket.");
  const size_t query = std::min(path.size() + 1, request.target.size());
  return {Verdict::Give::kView, 101, "", request.target.substr(query)};
}

}  // namespace zox::view
