// How much stack the operations take, on every instruction set, against the bounds in the header.
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "random_batch.h"

namespace {

constexpr size_t kStack = 2 << 20;
constexpr unsigned char kPaint = 0xA5;

struct Measurement {
  const std::function<void()>* operation;
  unsigned char* lowest;  // of the thread's stack
  size_t used;
};

// Paints all of the stack below this frame but for a margin in which memset itself works, calls the
// operation and looks how far down the paint is gone.
void* measure_here(void* argument) {
  auto& measurement = *static_cast<Measurement*>(argument);
  constexpr size_t kMargin = 1024;
  unsigned char* here = static_cast<unsigned char*>(__builtin_frame_address(0));
  size_t painted = static_cast<size_t>(here - measurement.lowest) - kMargin;
  std::memset(measurement.lowest, kPaint, painted);
  (*measurement.operation)();
  unsigned char* end = measurement.lowest + painted;
  unsigned char* touched = std::find_if(measurement.lowest, end, [](unsigned char c) { return c != kPaint; });
  measurement.used = static_cast<size_t>(here - touched);
  return nullptr;
}

size_t stack_of(const std::function<void()>& operation) {
  static std::vector<unsigned char> memory(kStack);
  Measurement measurement{&operation, memory.data(), 0};
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstack(&attributes, memory.data(), memory.size());
  pthread_t thread;
  if (pthread_create(&thread, &attributes, measure_here, &measurement) != 0) return kStack;
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  return measurement.used;
}

size_t bound_of(const zox_test::Caster& caster) {
  if (caster.blocked()) return ZOX_STACK_OTHER;
  return caster.trilinear() ? ZOX_STACK_GENERAL_TRILINEAR : ZOX_STACK_GENERAL_NEAREST;
}

TEST(Stack, MeasureSeesWhatIsTaken) {
  auto takes = [](size_t bytes) {
    return stack_of([bytes] {
      auto* taken = static_cast<volatile unsigned char*>(__builtin_alloca(bytes));
      taken[0] = 1;
    });
  };
  EXPECT_GE(takes(100'000), 100'000u);
  EXPECT_LT(takes(100'000), 104'096u);
}

TEST(Stack, RayCastersStayWithinTheirBounds) {
  constexpr int kBatches = 40;
  for (const zox_test::Caster& caster : zox_test::kCasters) {
    size_t most = 0;
    for (const zox_test::Operations* target : zox_test::all_targets()) {
      if (!target->supported()) continue;
      for (int seed = 0; seed < kBatches; ++seed) {
        zox_test::RandomBatch batch(caster, static_cast<uint64_t>(seed));
        most = std::max(most, stack_of([&] { (target->*caster.member)(&batch.volume(), &batch.rays()); }));
      }
    }
    std::printf("%-32s %7zu bytes of stack\n", caster.name, most);
    EXPECT_LE(most, bound_of(caster)) << caster.name;
  }
}

TEST(Stack, MaximaAndWindowLevelStayWithinTheirBounds) {
  constexpr int kRays = 1000, kSamples = 40;
  std::vector<int16_t> samples(kRays * kSamples, 100), maxima(kRays);
  std::vector<uint8_t> bytes(kRays), mask(kSamples, 0xFF);
  std::vector<void*> planes;
  for (int k = 0; k < kSamples; ++k) planes.push_back(&samples[static_cast<size_t>(k) * kRays]);
  std::vector<int32_t> counts;
  for (int r = 0; r < kRays; ++r) counts.push_back(r % (kSamples + 1));
  const zox_Rays rays{planes.data(), kRays, nullptr, nullptr, counts.data()};

  for (const zox::Operations* set : zox::kAllOperations) {
    if (!set->supported()) continue;
    const std::function<void()> operations[] = {
        [&] { set->find_max_8u(&rays, bytes.data()); },
        [&] { set->find_max_16s(&rays, maxima.data()); },
        [&] { set->find_max_bmask_8u(&rays, mask.data(), bytes.data()); },
        [&] { set->find_max_bmask_16s(&rays, mask.data(), maxima.data()); },
        [&] { set->find_max_cmask_8u(&rays, mask.data(), 7, bytes.data()); },
        [&] { set->find_max_cmask_16s(&rays, mask.data(), 7, maxima.data()); },
        [&] { set->window_level_16s_8u(maxima.data(), bytes.data(), kRays, 100, 50, 0, 255); },
    };
    size_t most = 0;
    for (const auto& operation : operations) most = std::max(most, stack_of(operation));
    std::printf("maxima, window/level, %-10s %7zu bytes of stack\n", set->name, most);
    EXPECT_LE(most, static_cast<size_t>(ZOX_STACK_OTHER)) << set->name;
  }
}

}  // namespace
