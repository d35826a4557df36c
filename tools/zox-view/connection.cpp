#include "connection.h"

#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>
#include <boost/beast/websocket/rfc6455.hpp>

#include "page.h"
#include "server_limits.h"

namespace zox::view {
namespace beast = boost::beast;
namespace http = boost::beast::http;

namespace {

std::string_view view_of(beast::string_view text) { return {text.data(), text.size()}; }

// What the page may do: run its own script, talk to this server, show pictures that it made.
std::string page_policy(const std::string& nonce, std::string_view host) {
  return "default-src 'none'; script-src 'nonce-" + nonce + "'; style-src 'nonce-" + nonce +
         "'; img-src blob: data:; connect-src ws://" + std::string(host) +
         "; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
}

// The page with the number that lets its script and style in.
std::string page_with(const std::string& nonce) {
  std::string page(page_text());
  constexpr std::string_view kPlace = "NONCE";
  for (size_t at = page.find(kPlace); at != std::string::npos; at = page.find(kPlace, at))
    page.replace(at, kPlace.size(), nonce);
  return page;
}

}  // namespace

void Connection::run() {
  parser_.emplace();
  parser_->header_limit(kMaxRequestBytes);
  parser_->body_limit(0);
  stream_.expires_after(kRequestTime);
  http::async_read(
      stream_, incoming_, *parser_, [self = shared_from_this()](beast::error_code error, size_t) {
        if (!error) return self->answer_request();
        if (error.category() == http::make_error_code(http::error::end_of_stream).category() &&
            error != http::error::end_of_stream && error != http::error::partial_message)
          return self->answer(400, "text/plain", "This is no request of HTTP that is understood here.\n",
                              "default-src 'none'");
        self->stop();
      });
}

void Connection::answer_request() {
  const Request& request = parser_->get();
  const bool upgrade = beast::websocket::is_upgrade(request);
  const std::string_view host = view_of(request[http::field::host]);
  // What is sent twice might be read differently by others.
  const bool once = request.count(http::field::host) == 1 && request.count(http::field::origin) <= 1;
  const Verdict verdict =
      guard_.judge({view_of(request.method_string()), view_of(request.target()),
                    once ? host : std::string_view(), view_of(request[http::field::origin]), upgrade});
  switch (verdict.give) {
    case Verdict::Give::kPage: {
      const std::string nonce = make_token();
      return answer(200, "text/html; charset=utf-8", page_with(nonce), page_policy(nonce, host));
    }
    case Verdict::Give::kView:
      if (make_view_(stream_, request, verdict.query)) return;
      return answer(503, "text/plain", "There are too many views.\n", "default-src 'none'");
    case Verdict::Give::kRefusal:
      return answer(verdict.status, "text/plain", std::string(verdict.reason) + "\n", "default-src 'none'");
  }
}

void Connection::answer(unsigned status, std::string_view type, std::string text, const std::string& policy) {
  response_.result(status);
  response_.version(11);
  response_.set(http::field::content_type, beast::string_view(type.data(), type.size()));
  response_.set("Content-Security-Policy", policy);
  response_.set("X-Content-Type-Options", "nosniff");
  response_.set("X-Frame-Options", "DENY");
  response_.set("Referrer-Policy", "no-referrer");
  response_.set("Cross-Origin-Resource-Policy", "same-origin");
  response_.set("Cross-Origin-Opener-Policy", "same-origin");
  response_.set(http::field::cache_control, "no-store");
  response_.keep_alive(false);
  response_.body() = std::move(text);
  response_.prepare_payload();
  stream_.expires_after(kAnswerTime);
  http::async_write(stream_, response_, [self = shared_from_this()](beast::error_code error, size_t) {
    beast::error_code ignored;
    if (!error) self->stream_.socket().shutdown(boost::asio::ip::tcp::socket::shutdown_send, ignored);
    self->stop();
  });
}

}  // namespace zox::view
