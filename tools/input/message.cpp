#include "message.h"

#include <cstring>

namespace zox::input {
namespace {

constexpr char kFoundMark = 'V';
constexpr char kFailureMark = 'F';
constexpr char kEnd = '.';

template <class Record>
void put(std::string& message, const Record& record) {
  message.append(reinterpret_cast<const char*>(&record), sizeof record);
}

void put_text(std::string& message, const std::string& text) {
  put(message, uint64_t{text.size()});
  message += text;
}

// Takes a message to pieces; every piece is empty once something is missing.
class Reader {
 public:
  explicit Reader(const std::string& message) : message_(message) {}

  template <class Record>
  Record take() {
    Record record{};
    if (const char* bytes = take_bytes(sizeof record)) std::memcpy(&record, bytes, sizeof record);
    return record;
  }
  std::string take_text() {
    const auto length = take<uint64_t>();
    const char* bytes = take_bytes(length);
    return bytes ? std::string(bytes, length) : "";
  }
  bool good() const { return good_; }

 private:
  const char* take_bytes(uint64_t bytes) {
    good_ = good_ && bytes <= message_.size() - at_;
    if (!good_) return nullptr;
    at_ += bytes;
    return message_.data() + at_ - bytes;
  }

  const std::string& message_;
  size_t at_ = 0;
  bool good_ = true;
};

}  // namespace

std::string pack_found(const Found& found) {
  std::string message(1, kFoundMark);
  put(message, found.array);
  put(message, found.window.has_value());
  put(message, found.window.value_or(Window{}));
  put(message, found.offset);
  put_text(message, found.file);
  put(message, found.in_blocks);
  put(message, uint64_t{found.notes.size()});
  for (const std::string& note : found.notes) put_text(message, note);
  put(message, uint64_t{found.positions.size()});
  for (const double position : found.positions) put(message, position);
  return message + kEnd;
}

std::string pack_failure(const std::string& sentence) {
  std::string message(1, kFailureMark);
  put_text(message, sentence);
  return message + kEnd;
}

std::optional<Found> unpack(const std::string& message) {
  Reader reader(message);
  const char mark = reader.take<char>();
  if (mark == kFailureMark) {
    const std::string sentence = reader.take_text();
    if (reader.take<char>() == kEnd) throw Failure(sentence);
  }
  if (mark != kFoundMark) return std::nullopt;
  Found found;
  found.array = reader.take<zox_render_array>();
  const bool has_window = reader.take<bool>();
  const Window window = reader.take<Window>();
  if (has_window) found.window = window;
  found.offset = reader.take<uint64_t>();
  found.file = reader.take_text();
  found.in_blocks = reader.take<bool>();
  for (auto left = reader.take<uint64_t>(); left > 0 && reader.good(); --left)
    found.notes.push_back(reader.take_text());
  for (auto left = reader.take<uint64_t>(); left > 0 && reader.good(); --left)
    found.positions.push_back(reader.take<double>());
  if (reader.take<char>() != kEnd) return std::nullopt;
  return found;
}

}  // namespace zox::input
