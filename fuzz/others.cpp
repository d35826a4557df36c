// Window and level, and the frame.
#include <cstring>
#include <vector>

#include "differ.h"
#include "fuzz_operations.h"
#include "guarded_buffer.h"
#include "operation_list.h"
#include "reference.h"
#include "window_rows.h"
#include "zox_volume_names.h"

namespace zox_fuzz {
namespace {

using zox_test::GuardedBuffer;
using zox_test::Mapping;
using zox_test::Random;
using zox_test::Window;

// The whole buffer after the call: `shift` is where dst lies behind src, below 0 in a buffer of its own.
std::vector<uint8_t> run(Mapping map, int len, const Window& w, const std::vector<uint8_t>& content,
                         int shift, int* status) {
  GuardedBuffer both(content.size(), GuardedBuffer::Flush::kEnd);
  std::copy(content.begin(), content.end(), both.data());
  GuardedBuffer apart(static_cast<size_t>(std::max(0, len)), GuardedBuffer::Flush::kEnd);
  std::fill(apart.data(), apart.data() + apart.size(), uint8_t{77});
  uint8_t* dst = shift < 0 ? apart.data() : both.data() + shift;
  *status = map(both.as<int16_t>(), dst, len, w.center, w.width, w.outmin, w.outmax);
  std::vector<uint8_t> after(both.data(), both.data() + both.size());
  after.insert(after.end(), apart.data(), apart.data() + apart.size());
  return after;
}

void require(bool good, const char* what) {
  if (!good) disagree(what);
}

void fuzz_allocator(int number, Random& random) {
  const int size =
      random.pick({random.whole(-2, 2), random.whole(1, 100000), INT32_MAX - random.whole(0, 63)});
  auto* block = static_cast<uint8_t*>(number == 0 ? zox_Malloc(size) : __zox_Malloc(size));
  require(block == nullptr || reinterpret_cast<uintptr_t>(block) % 64 == 0, "the alignment of a block");
  require(size > 0 || block == nullptr, "a block of no bytes");
  require(size < 1 || size > 100000 || block != nullptr, "no block of a few bytes");
  require(size <= INT32_MAX - 64 || block == nullptr, "a block beyond the largest size");
  if (block != nullptr && size <= 100000) std::memset(block, 1, static_cast<size_t>(size));
  if (number == 0) {
    zox_Free(block);
  } else {
    __zox_Free(block);
  }
}

void fuzz_align(Random& random) {
  const int alignment = 1 << random.whole(0, 30);
  const uintptr_t address = random.bits() >> random.whole(2, 60);
  const auto aligned =
      reinterpret_cast<uintptr_t>(zox_AlignPointer(reinterpret_cast<void*>(address), alignment));
  const auto step = static_cast<uintptr_t>(alignment);
  require(aligned == (address + step - 1) / step * step, "an aligned pointer");
}

}  // namespace

void fuzz_window_level(Random random) {
  const Window w = draw_window(random);
  const int len = random.pick({random.whole(-1, 5), random.whole(0, 40), random.whole(0, 700)});
  const int shift = random.pick({-1, -1, 0, random.whole(0, 40)});
  std::vector<uint8_t> content(2 * static_cast<size_t>(std::max(0, len)) + 64);
  fill_row(reinterpret_cast<int16_t*>(content.data()), static_cast<int>(content.size() / 2), w, random);
  int expected_status = 0;
  const auto expected = run(reference::window_level_16s_8u, len, w, content, shift, &expected_status);
  for (const zox_test::Operations* target : zox_test::all_targets()) {
    if (!target->supported()) continue;
    int status = 0;
    const auto actual = run(target->window_level_16s_8u, len, w, content, shift, &status);
    if (status == expected_status && actual == expected) continue;
    disagree(std::string("WindowLevel, ") + target->name + ", len " + std::to_string(len) + ", window " +
             std::to_string(w.center) + "," + std::to_string(w.width) + ", output " +
             std::to_string(w.outmin) + " to " + std::to_string(w.outmax) + ", dst at " +
             std::to_string(shift));
  }
}

void fuzz_frame(int number, Random random) {
  const int value = random.pick({random.whole(-2, 5), random.whole(INT32_MIN, INT32_MAX)});
  int stored = 0;
  switch (number) {
    case 0:
    case 1:
      return fuzz_allocator(number, random);
    case 2:
      return fuzz_align(random);
    case 3:
    case 4:
      require(zox_SetNumThreads(value) == 0 && __zox_GetNumThreads(&stored) == 0 && stored == value,
              "the thread count");
      return require(zox_nthreads == value, "the exported thread count");
    case 5:
      return require(
          (std::strcmp(zox_GetStringStatus(value), "Unknown Status") == 0) == (value < 0 || value > 3),
          "the text of a status");
    default:
      return require(std::strcmp(zox_GetVersion(), zoxid + 4) == 0 && zox_GetVersion() != zoxid + 4,
                     "the version");
  }
}

}  // namespace zox_fuzz
