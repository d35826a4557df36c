#include "pass_descriptor.h"

#include <sys/socket.h>
#include <sys/uio.h>

#include <cerrno>
#include <cstring>

namespace zox::view {
namespace {

// A message is never empty: its first byte says nothing.
struct Envelope {
  char first = 0;
  iovec parts[2];
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
  msghdr message{};

  Envelope(void* text, size_t bytes) {
    parts[0] = {&first, 1};
    parts[1] = {text, bytes};
    message.msg_iov = parts;
    message.msg_iovlen = 2;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
  }
};

}  // namespace

void send_with_descriptor(int socket, std::string_view text, int descriptor) {
  Envelope envelope(const_cast<char*>(text.data()), text.size());
  if (descriptor < 0) {
    envelope.message.msg_controllen = 0;
  } else {
    cmsghdr* control = CMSG_FIRSTHDR(&envelope.message);
    control->cmsg_level = SOL_SOCKET;
    control->cmsg_type = SCM_RIGHTS;
    control->cmsg_len = CMSG_LEN(sizeof descriptor);
    std::memcpy(CMSG_DATA(control), &descriptor, sizeof descriptor);
  }
  while (sendmsg(socket, &envelope.message, MSG_NOSIGNAL) < 0 && errno == EINTR) {
  }
}

Received receive_with_descriptor(int socket, std::string& text) {
  Envelope envelope(text.data(), text.size());
  ssize_t bytes;
  do bytes = recvmsg(socket, &envelope.message, MSG_CMSG_CLOEXEC);
  while (bytes < 0 && errno == EINTR);
  Received received;
  received.arrived = bytes > 0;
  text.resize(bytes > 0 ? static_cast<size_t>(bytes) - 1 : 0);
  const cmsghdr* control = CMSG_FIRSTHDR(&envelope.message);
  if (bytes > 0 && control != nullptr && control->cmsg_type == SCM_RIGHTS)
    std::memcpy(&received.descriptor, CMSG_DATA(control), sizeof received.descriptor);
  return received;
}

}  // namespace zox::view
