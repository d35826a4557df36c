// Worker threads that many calls share.
#pragma once

#include <condition_variable>
#include <list>
#include <mutex>
#include <thread>
#include <vector>

namespace render {

class Pool {
 public:
  explicit Pool(int threads);
  ~Pool();
  int threads() const { return static_cast<int>(workers_.size()) + 1; }

  // Calls task(context, i) once for every i of 0 .. count - 1, on the calling thread and on the workers that
  // are free, and returns when all have returned. Tasks must not throw.
  void run(int count, void (*task)(void*, int), void* context);

 private:
  struct Job {
    void (*task)(void*, int);
    void* context;
    int count, next = 0, running = 0;
  };
  void work();
  void end();
  void help(Job& job, std::unique_lock<std::mutex>& lock);

  std::mutex mutex_;
  std::condition_variable wanted_, finished_;
  std::list<Job*> jobs_;  // with tasks that nobody has taken
  bool stop_ = false;
  std::vector<std::thread> workers_;
};

// Processors that the process may use.
int usable_processors();

}  // namespace render
