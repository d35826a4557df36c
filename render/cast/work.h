// How a call spreads its work over threads, tells of its progress and is cancelled.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <set>
#include <thread>

#include "cast/pool.h"
#include "failure.h"

// What the C interface knows as a pool.
struct zox_render_pool {
  explicit zox_render_pool(int threads) : pool(threads) {}
  render::Pool pool;
};

namespace render {

class Work {
 public:
  explicit Work(const zox_render_run* run);  // null: the calling thread alone, in silence

  // Calls body(i) for every i of 0 .. count - 1 and returns when all have returned, while the share done
  // grows to `share`. The first failure ends the rest and is thrown here, as is ZOX_RENDER_CANCELLED.
  void spread(int count, double share, const std::function<void(int)>& body);

  int threads() const { return static_cast<int>(seen_.size()); }  // that have worked

 private:
  struct Spread;
  static void task(void* context, int i);
  void run_one(Spread& spread, int i);
  void tell(Spread& spread);
  void stop(int status, const char* sentence) noexcept;
  void note_thread();

  zox_render_run run_{};
  std::thread::id caller_ = std::this_thread::get_id();
  double told_ = 0;
  std::atomic<bool> stopped_ = false;
  std::mutex mutex_;
  std::set<std::thread::id> seen_;
  int status_ = ZOX_RENDER_OK;
  char sentence_[512] = "";
};

}  // namespace render
