// Bytes to a valid call of any of the 32 operations: the first byte names the operation, the others
// decide, two at a time, what the tests' generator draws.
#include "fuzz_operations.h"

#include "filled_planes.h"
#include "operation_list.h"

// zox_Malloc passes requests on that malloc must refuse.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  constexpr int kFrame = 7;
  constexpr int kOperations = zox_test::kCasterCount + zox_test::kMaximumCount + 1 + kFrame;
  static_assert(kOperations == 32);
  if (size == 0) return 0;
  int number = bytes[0] % kOperations;
  ++bytes;
  --size;
  if (number < zox_test::kCasterCount) {
    zox_fuzz::fuzz_caster(number, bytes, size);
    return 0;
  }
  number -= zox_test::kCasterCount;
  const zox_test::Random random(bytes, size);
  if (number < zox_test::kMaximumCount) {
    zox_fuzz::fuzz_maximum(number, random);
  } else if (number == zox_test::kMaximumCount) {
    zox_fuzz::fuzz_window_level(random);
  } else {
    zox_fuzz::fuzz_frame(number - zox_test::kMaximumCount - 1, random);
  }
  return 0;
}
