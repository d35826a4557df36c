#include "cast/pool.h"

#include <sched.h>

#include <algorithm>

namespace render {

Pool::Pool(int threads) {
  workers_.reserve(static_cast<size_t>(threads));
  try {
    for (int t = 1; t < threads; ++t) workers_.emplace_back([this] { work(); });
  } catch (...) {
    end();
    throw;
  }
}

Pool::~Pool() { end(); }

void Pool::end() {
  {
    const std::lock_guard lock(mutex_);
    stop_ = true;
  }
  wanted_.notify_all();
  for (std::thread& worker : workers_) worker.join();
  workers_.clear();
}

void Pool::help(Job& job, std::unique_lock<std::mutex>& lock) {
  ++job.running;
  while (job.next < job.count) {
    const int i = job.next++;
    if (job.next == job.count) jobs_.remove(&job);
    lock.unlock();
    job.task(job.context, i);
    lock.lock();
  }
  if (--job.running == 0) finished_.notify_all();
}

void Pool::work() {
  std::unique_lock lock(mutex_);
  for (;;) {
    wanted_.wait(lock, [this] { return stop_ || !jobs_.empty(); });
    if (stop_) return;
    help(*jobs_.front(), lock);
  }
}

void Pool::run(int count, void (*task)(void*, int), void* context) {
  if (count <= 0) return;
  Job job{task, context, count};
  std::unique_lock lock(mutex_);
  jobs_.push_back(&job);
  wanted_.notify_all();
  help(job, lock);
  finished_.wait(lock, [&] { return job.running == 0; });
}

int usable_processors() {
  cpu_set_t set;
  if (sched_getaffinity(0, sizeof set, &set) == 0) return std::clamp(CPU_COUNT(&set), 1, 1024);
  return std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, 1024);
}

}  // namespace render
