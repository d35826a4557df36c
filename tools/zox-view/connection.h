// A connection whose peer has still to show that it may ask: it gets one answer, or becomes a view.
#pragma once

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "guard.h"

namespace zox::view {

class Connection : public std::enable_shared_from_this<Connection> {
 public:
  using Request = boost::beast::http::request<boost::beast::http::empty_body>;
  // Takes over what asks to become a view; false: there are too many.
  using MakeView =
      std::function<bool(boost::beast::tcp_stream& stream, const Request& request, std::string_view query)>;

  Connection(boost::asio::ip::tcp::socket socket, const Guard& guard, MakeView make_view)
      : stream_(std::move(socket)), guard_(guard), make_view_(std::move(make_view)) {}
  void run();
  void stop() { stream_.close(); }

 private:
  void answer_request();
  void answer(unsigned status, std::string_view type, std::string text, const std::string& policy);

  boost::beast::tcp_stream stream_;
  const Guard& guard_;
  MakeView make_view_;
  boost::beast::flat_buffer incoming_;
  std::optional<boost::beast::http::request_parser<boost::beast::http::empty_body>> parser_;
  boost::beast::http::response<boost::beast::http::string_body> response_;
};

}  // namespace zox::view
