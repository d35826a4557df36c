#include "view_session.h"

#include <boost/asio/post.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <new>
#include <utility>

#include "json.h"
#include "server_limits.h"

namespace zox::view {
namespace asio = boost::asio;
namespace beast = boost::beast;
namespace websocket = boost::beast::websocket;

Session::Session(beast::tcp_stream stream, Shared& shared)
    : shared_(shared), socket_(std::move(stream)), pause_(shared.io) {}

void Session::run(const Upgrade& upgrade, const std::string& name) {
  socket_.set_option(websocket::stream_base::timeout::suggested(beast::role_type::server));
  socket_.read_message_max(kMaxMessageBytes);
  socket_.auto_fragment(false);  // a picture is written in one piece
  beast::get_lowest_layer(socket_).expires_never();
  socket_.async_accept(upgrade, [self = shared_from_this(), name](beast::error_code error) {
    if (error) return self->stop();
    self->open(name);
    self->read();
  });
}

void Session::stop() {
  stopped_ = true;
  cancel_ = true;
  frame_.reset();
  pick_.reset();
  pause_.cancel();
  beast::get_lowest_layer(socket_).close();
}

void Session::open(const std::string& name) {
  if (name.empty() && shared_.first.empty())
    return send(
        {false, JsonObject().text("do", "no volume").flag("folder", shared_.folder.has_value()).str()});
  JsonObject reading;
  reading.text("do", "reading").text("name", name.empty() ? shared_.first : name);
  send({false, reading.flag("folder", shared_.folder.has_value()).str()});
  asio::post(shared_.reading, [self = shared_from_this(), name] {
    std::shared_ptr<Volume> volume;
    std::string sentence;
    try {
      if (!self->cancel_) volume = self->shared_.volumes.get(name.empty() ? self->shared_.first : name);
    } catch (const std::bad_alloc&) {
      sentence = name + " needs more memory than there is.";
    } catch (const std::runtime_error& failure) {
      sentence = failure.what();
    }
    asio::post(self->shared_.io, [self, volume, sentence] { self->opened(volume, sentence); });
  });
}

void Session::opened(std::shared_ptr<Volume> volume, const std::string& sentence) {
  if (stopped_) return;
  if (!volume) return send(complaint(0, sentence));
  send({false, volume->description()});
  frames_.emplace(std::move(volume), shared_.pool);
}

void Session::read() {
  if (reading_ || stopped_ || outgoing_.size() > kMaxUnsent) return;
  reading_ = true;
  socket_.async_read(incoming_, [self = shared_from_this()](beast::error_code error, size_t) {
    self->reading_ = false;
    if (error) return self->stop();
    const std::string text = beast::buffers_to_string(self->incoming_.data());
    self->incoming_.consume(self->incoming_.size());
    self->handle(text);
    self->read_later();
  });
}

void Session::read_later() {
  if (stopped_) return;
  pause_.expires_after(kMessageTime);
  pause_.async_wait([self = shared_from_this()](beast::error_code error) {
    if (!error) self->read();
  });
}

void Session::handle(const std::string& text) {
  uint32_t number = 0;
  try {
    const Fields fields = parse_fields(text);
    number = parse_number(fields);
    const auto what = fields.find("do");
    const std::string_view wanted = what == fields.end() ? std::string_view() : what->second;
    if (wanted == "files") {
      const auto name = fields.find("folder");
      return send({false, list(name == fields.end() ? "" : name->second)});
    }
    if (wanted != "frame" && wanted != "pick") throw Refusal("A message asks for frame, pick or files.");
    if (!frames_) throw Refusal("There is no volume yet.");
    if (wanted == "frame")
      want(frame_, number,
           [this, request = parse_frame(fields)](auto& cancel) { return frames_->draw(request, cancel); });
    else
      want(pick_, number,
           [this, request = parse_pick(fields)](auto& cancel) { return frames_->pick(request, cancel); });
  } catch (const Refusal& refusal) {
    send(complaint(number, refusal.what()));
  }
}

// A frame ends whatever is in the making; a pixel waits until it can be told.
void Session::want(std::optional<Wanted>& slot, uint32_t number, Job job) {
  if (slot) send(cancelled(slot->number));
  slot = Wanted{number, std::move(job)};
  if (busy_ && &slot == &frame_) cancel_ = true;
  start_next();
}

void Session::start_next() {
  if (busy_ || stopped_ || (!frame_ && !pick_)) return;
  busy_ = true;
  cancel_ = false;
  const Wanted wanted = *std::exchange(frame_ ? frame_ : pick_, std::nullopt);
  asio::post(shared_.jobs, [self = shared_from_this(), wanted] {
    Answer answer;
    try {
      answer = wanted.job(self->cancel_);
    } catch (const std::bad_alloc&) {
      answer = complaint(wanted.number, "This picture needs more memory than there is.");
    } catch (const std::runtime_error& failure) {
      answer = complaint(wanted.number, failure.what());
    }
    asio::post(self->shared_.io,
               [self, answer = std::move(answer)]() mutable { self->finished(std::move(answer)); });
  });
}

void Session::finished(Answer answer) {
  busy_ = false;
  if (stopped_) return;
  send(std::move(answer));
  start_next();
}

std::string Session::list(const std::string& name) const {
  if (!shared_.folder) throw Refusal("No folder was named when the server was started.");
  std::string entries = "[";
  for (const Entry& entry : shared_.folder->list(name)) {
    JsonObject json;
    json.text("name", entry.name).flag("folder", entry.is_folder).number("bytes", entry.bytes);
    if (entries.size() > 1) entries += ',';
    entries += json.str();
  }
  return JsonObject().text("do", "files").text("folder", name).raw("entries", entries + "]").str();
}

void Session::send(Answer answer) {
  if (stopped_) return;
  outgoing_.push_back(std::move(answer));
  if (!writing_) write();
}

void Session::write() {
  writing_ = true;
  socket_.binary(outgoing_.front().binary);
  socket_.async_write(asio::buffer(outgoing_.front().data),
                      [self = shared_from_this()](beast::error_code error, size_t) {
                        self->writing_ = false;
                        if (error) return self->stop();
                        self->outgoing_.pop_front();
                        if (!self->outgoing_.empty()) self->write();
                        self->read();
                      });
}

}  // namespace zox::view
