// Reading while the server runs. Readers fork, which only a process without threads may do; so a
// process apart is started before there are any, reads what it is asked for, one file at a time, and
// hands the scans over in shared memory.
#pragma once

#include <sys/types.h>

#include <mutex>
#include <string>

#include "../input/scan.h"

namespace zox::view {

class Reading {
 public:
  // Call it before the process has threads. Throws std::system_error.
  explicit Reading(const input::ReadOptions& options);
  ~Reading();
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;

  // Waits for its turn and for the scan. Throws input::Failure.
  input::Scan read(const std::string& path);
  // Ends the process; reads that wait throw.
  void stop();

 private:
  int socket_ = -1;
  pid_t process_ = -1;
  std::mutex turn_;
};

}  // namespace zox::view
