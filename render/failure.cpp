#include "failure.h"

#include <algorithm>
#include <cstring>

namespace render {
namespace {

constexpr size_t kLongest = 511;
thread_local char t_sentence[kLongest + 1];

}  // namespace

void fail(int status, const std::string& sentence) { throw Failure(status, sentence); }
void reject(const std::string& sentence) { fail(ZOX_RENDER_BAD_ARGUMENT, sentence); }

void remember_error(const char* sentence) noexcept {
  const size_t length = std::min(std::strlen(sentence), kLongest);
  std::memcpy(t_sentence, sentence, length);
  t_sentence[length] = 0;
}

const char* last_error() noexcept { return t_sentence; }

}  // namespace render
