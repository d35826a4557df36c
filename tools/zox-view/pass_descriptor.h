// Open files from one process to another.
#pragma once

#include <string>
#include <string_view>

namespace zox::view {

// One message with `text` and, unless it is negative, a descriptor; what fails the receiver notices.
void send_with_descriptor(int socket, std::string_view text, int descriptor);

struct Received {
  bool arrived = false;  // false: the other end is closed
  int descriptor = -1;   // the caller's to close
};

// Waits for a message. `text` has the size of the longest one and is cut to the one that came.
Received receive_with_descriptor(int socket, std::string& text);

}  // namespace zox::view
