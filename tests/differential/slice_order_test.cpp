// The promise of the slice lists: slices are visited once each, in ascending order, so that a stack
// may lie in mapped files. Every slice is on protected pages; the first touch is recorded and opens
// it, and a slice that the sweep has left is closed again, so that going back is seen.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>

#include <string>
#include <vector>

#include "cases.h"
#include "crash_note.h"
#include "random_batch.h"

namespace zox_test {
namespace {

// Seen by the signal handler: plain arrays, set up before the sweep begins.
struct Watch {
  struct Slice {
    uint8_t* pages = nullptr;
    size_t size = 0;
    bool left = false;
  };
  std::vector<Slice> slices;
  int reach = 0;             // slices below the newest that a sample may read beside it
  std::vector<int> touched;  // reserved: one entry a slice
  int went_back_to = -1;
};
Watch* watch = nullptr;
struct sigaction previous_action;

int slice_at(const Watch& w, const uint8_t* address) {
  for (size_t s = 0; s < w.slices.size(); ++s) {
    if (address >= w.slices[s].pages && address < w.slices[s].pages + w.slices[s].size)
      return static_cast<int>(s);
  }
  return -1;
}

void on_touch(int, siginfo_t* info, void*) {
  const int s = watch == nullptr ? -1 : slice_at(*watch, static_cast<const uint8_t*>(info->si_addr));
  if (s < 0) {
    sigaction(SIGSEGV, &previous_action, nullptr);  // not ours: fault again for whoever was there
    return;
  }
  Watch& w = *watch;
  Watch::Slice& slice = w.slices[static_cast<size_t>(s)];
  mprotect(slice.pages, slice.size, PROT_READ);
  if (slice.left) {
    w.went_back_to = s;
    return;
  }
  w.touched.push_back(s);
  for (int below = 0; below < s - w.reach; ++below) {
    Watch::Slice& done = w.slices[static_cast<size_t>(below)];
    if (done.pages == nullptr || done.left) continue;
    done.left = true;
    mprotect(done.pages, done.size, PROT_NONE);
  }
}

void close_slices(Watch& w, const RandomBatch& batch, int count) {
  w.slices.resize(static_cast<size_t>(count));
  w.touched.reserve(static_cast<size_t>(count));
  for (int s = 0; s < count; ++s) {
    const SliceStack::Pages pages = batch.stack().slice_pages(s);
    if (pages.at == nullptr) continue;
    w.slices[static_cast<size_t>(s)] = {pages.at, pages.size, false};
    ASSERT_EQ(0, mprotect(pages.at, pages.size, PROT_NONE));
  }
}

void sweep_under_watch(Watch& w, RandomBatch& batch, zox::RayCast cast) {
  struct sigaction action {};
  action.sa_sigaction = on_touch;
  action.sa_flags = SA_SIGINFO;
  sigaction(SIGSEGV, &action, &previous_action);
  watch = &w;
  batch.run(cast);
  watch = nullptr;
  sigaction(SIGSEGV, &previous_action, nullptr);
}

class SliceOrder : public CasterTest {};

TEST_P(SliceOrder, SlicesAreVisitedOnceAscending) {
  const Seeds chosen = seeds_of(target(), 150);
  for (uint64_t seed = chosen.first; seed < chosen.first + chosen.count; ++seed) {
    RandomBatch batch(caster(), seed, Validity::kValid, Slices::kApart);
    if (batch.takes_one_region_path()) continue;
    const std::string what = std::string(target().name) + ", " + batch.describe();
    set_crash_note(what);
    Watch w;
    w.reach = caster().trilinear() ? 1 : 0;
    close_slices(w, batch, batch.volume().nslices + w.reach);
    sweep_under_watch(w, batch, cast());
    ASSERT_EQ(-1, w.went_back_to) << "a slice was touched after the sweep had left it\n" << what;
    size_t used = 0;
    for (const Watch::Slice& slice : w.slices) used += slice.pages != nullptr;
    ASSERT_EQ(used, w.touched.size()) << what;
    for (size_t i = 1; i < w.touched.size(); ++i) {
      ASSERT_LT(w.touched[i - 1], w.touched[i]) << "first touches out of order\n" << what;
    }
  }
}

INSTANTIATE_CASTERS(SliceOrder, all_targets(), slice_stacks);

}  // namespace
}  // namespace zox_test
