// One view: a WebSocket over which the page asks for pictures. At most one is in the making; a newer
// request replaces an older one, which is then answered with "cancelled".
#pragma once

#include <atomic>
#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/thread_pool.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "folder.h"
#include "shown_volume.h"
#include "view_frames.h"

namespace zox::view {

// What all views share.
struct Shared {
  boost::asio::io_context& io;        // everything but jobs runs here, on one thread
  boost::asio::thread_pool& jobs;     // pictures are made here
  boost::asio::thread_pool& reading;  // files are read here
  Volumes& volumes;
  std::optional<Folder> folder;  // whose files may be opened
  std::string first;             // the volume that is shown first; empty: none
  zox_render_pool* pool;
};

class Session : public std::enable_shared_from_this<Session> {
 public:
  using Upgrade = boost::beast::http::request<boost::beast::http::empty_body>;

  Session(boost::beast::tcp_stream stream, Shared& shared);
  // `name` is the file that the view shows; empty: the first one.
  void run(const Upgrade& upgrade, const std::string& name);
  // Ends what it does, soon.
  void stop();

 private:
  using Job = std::function<Answer(std::atomic<bool>& cancel)>;
  struct Wanted {
    uint32_t number = 0;
    Job job;
  };

  void open(const std::string& name);
  void opened(std::shared_ptr<Volume> volume, const std::string& sentence);
  void read();
  void read_later();
  void handle(const std::string& text);
  void want(std::optional<Wanted>& slot, uint32_t number, Job job);
  void start_next();
  void finished(Answer answer);
  std::string list(const std::string& name) const;
  void send(Answer answer);
  void write();

  Shared& shared_;
  boost::beast::websocket::stream<boost::beast::tcp_stream> socket_;
  boost::beast::flat_buffer incoming_;
  boost::asio::steady_timer pause_;
  std::deque<Answer> outgoing_;
  bool writing_ = false;
  bool reading_ = false;
  bool stopped_ = false;
  std::optional<Frames> frames_;
  std::optional<Wanted> frame_, pick_;  // the newest of each that waits
  bool busy_ = false;
  std::atomic<bool> cancel_ = false;  // what is in the making
};

}  // namespace zox::view
