#include "cast/work.h"

#include <cstdio>

namespace render {

struct Work::Spread {
  Work& work;
  int count;
  double from, share;
  const std::function<void(int)>& body;
  std::atomic<int> done = 0;
};

Work::Work(const zox_render_run* run) {
  if (!run) return;
  run_ = checked(run, "run");
  require(!run_.pool || !run_.parallel_for, "run has both a pool and a parallel_for.");
}

// Takes no memory, since that may be what has run out.
void Work::stop(int status, const char* sentence) noexcept {
  const std::lock_guard lock(mutex_);
  if (!stopped_) {
    status_ = status;
    std::snprintf(sentence_, sizeof sentence_, "%s", sentence);
  }
  stopped_ = true;
}

void Work::note_thread() {
  const std::lock_guard lock(mutex_);
  seen_.insert(std::this_thread::get_id());
}

void Work::tell(Spread& spread) {
  if (!run_.progress || std::this_thread::get_id() != caller_) return;
  const double share = spread.from + (spread.share - spread.from) * spread.done / spread.count;
  if (run_.progress(run_.progress_user, share))
    stop(ZOX_RENDER_CANCELLED, "The progress callback cancelled the call.");
}

void Work::run_one(Spread& spread, int i) {
  if (!stopped_) {
    const int status = guarded([&] {
      note_thread();
      spread.body(i);
    });
    if (status != ZOX_RENDER_OK) stop(status, last_error());
  }
  ++spread.done;
  if (!stopped_) tell(spread);
}

void Work::task(void* context, int i) {
  Spread& spread = *static_cast<Spread*>(context);
  spread.work.run_one(spread, i);
}

void Work::spread(int count, double share, const std::function<void(int)>& body) {
  Spread spread{*this, count, told_, share, body};
  if (run_.pool)
    run_.pool->pool.run(count, task, &spread);
  else if (run_.parallel_for)
    run_.parallel_for(run_.parallel_for_user, count, task, &spread);
  else
    for (int i = 0; i < count; ++i) task(&spread, i);
  told_ = share;
  if (stopped_) fail(status_, sentence_);
  if (spread.done != count) fail(ZOX_RENDER_FAILED, "parallel_for did not call every task.");
}

}  // namespace render
