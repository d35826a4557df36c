// The operations that take no batch.
#include <cstdint>

#include "checks.h"

namespace zox_check {

void check_window_level(const void* src, const void* dst, int len) {
  if (len < 1 || (src && dst)) return;
  Report report("zox_Volume_WindowLevel_16S_8U");
  if (!src) report.say({}, "src is null, but len is %d", len);
  if (!dst) report.say({}, "dst is null, but len is %d", len);
}

void check_get_threads(const int* count) {
  if (count) return;
  Report("zox_GetNumThreads").say({}, "the pointer to the count is null");
}

// A block from zox_Malloc is 64-byte aligned and has the pointer that malloc gave just below it, 8
// to 71 bytes away. A freed block mostly fails this too: malloc reuses that word.
void check_free(const void* block) {
  if (!block) return;
  const auto address = reinterpret_cast<std::uintptr_t>(block);
  if (address % 64 == 0) {
    const std::uintptr_t raw = static_cast<const std::uintptr_t*>(block)[-1];
    if (address - raw >= 8 && address - raw <= 71) return;
  }
  Report("zox_Free").say({}, "the block at %p did not come from zox_Malloc", block);
}

void check_alignment(int alignment) {
  if (alignment > 0 && (alignment & (alignment - 1)) == 0) return;
  Report("zox_AlignPointer").say({}, "the alignment is %d, but must be a power of two", alignment);
}

}  // namespace zox_check
