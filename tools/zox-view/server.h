// Listens, and keeps the books of who is connected.
#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <list>
#include <memory>
#include <string>

#include "connection.h"
#include "guard.h"
#include "view_session.h"

namespace zox::view {

class Server {
 public:
  // Listens at once. Throws boost::system::system_error.
  Server(Shared& shared, Guard guard, const boost::asio::ip::tcp::endpoint& at);
  const Guard& guard() const { return guard_; }
  uint16_t port() const { return listener_.local_endpoint().port(); }
  // Answers until a signal asks to end; then everything is stopped but jobs may still be running.
  void run();

 private:
  void accept();
  void greet(boost::asio::ip::tcp::socket socket);
  bool make_view(boost::beast::tcp_stream& stream, const Connection::Request& request,
                 std::string_view query);
  void stop();

  Shared& shared_;
  Guard guard_;
  boost::asio::ip::tcp::acceptor listener_;
  boost::asio::signal_set signals_;
  boost::asio::steady_timer pause_;
  std::list<std::weak_ptr<Connection>> strangers_;  // the oldest first
  std::list<std::weak_ptr<Session>> views_;
};

}  // namespace zox::view
