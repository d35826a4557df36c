#include "server.h"

#include <csignal>
#include <utility>

#include "server_limits.h"
#include "view_request.h"

namespace zox::view {
namespace asio = boost::asio;
using asio::ip::tcp;

Server::Server(Shared& shared, Guard guard, const tcp::endpoint& at)
    : shared_(shared),
      guard_(std::move(guard)),
      listener_(shared.io, at),
      signals_(shared.io, SIGINT, SIGTERM),
      pause_(shared.io) {}

void Server::run() {
  signals_.async_wait([this](boost::system::error_code error, int) {
    if (!error) stop();
  });
  accept();
  shared_.io.run();
}

void Server::accept() {
  listener_.async_accept([this](boost::system::error_code error, tcp::socket socket) {
    if (!listener_.is_open()) return;
    if (!error) {
      greet(std::move(socket));
      return accept();
    }
    // Out of descriptors, for example: some come free soon.
    pause_.expires_after(std::chrono::milliseconds(20));
    pause_.async_wait([this](boost::system::error_code cancelled) {
      if (!cancelled) accept();
    });
  });
}

void Server::greet(tcp::socket socket) {
  strangers_.remove_if([](const auto& stranger) { return stranger.expired(); });
  if (strangers_.size() >= kMaxStrangers) {
    if (const auto oldest = strangers_.front().lock()) oldest->stop();
    strangers_.pop_front();
  }
  boost::system::error_code ignored;
  socket.set_option(tcp::no_delay(true), ignored);
  const auto stranger = std::make_shared<Connection>(
      std::move(socket), guard_, [this](auto& stream, const auto& request, std::string_view query) {
        return make_view(stream, request, query);
      });
  strangers_.push_back(stranger);
  stranger->run();
}

bool Server::make_view(boost::beast::tcp_stream& stream, const Connection::Request& request,
                       std::string_view query) {
  views_.remove_if([](const auto& view) { return view.expired(); });
  if (views_.size() >= kMaxViews) return false;
  std::string name;
  try {
    const Fields fields = parse_fields(query);
    if (const auto file = fields.find("file"); file != fields.end()) name = file->second;
  } catch (const Refusal&) {
    name = std::string(query);  // and there is no such file
  }
  const auto view = std::make_shared<Session>(std::move(stream), shared_);
  views_.push_back(view);
  view->run(request, name);
  return true;
}

void Server::stop() {
  boost::system::error_code ignored;
  listener_.close(ignored);
  pause_.cancel();
  for (const auto& stranger : strangers_)
    if (const auto open = stranger.lock()) open->stop();
  for (const auto& view : views_)
    if (const auto open = view.lock()) open->stop();
  shared_.io.stop();
}

}  // namespace zox::view
