// The processes that render one volume together.
#pragma once

#include <mpi.h>

#include <functional>
#include <stdexcept>
#include <string>

namespace zox_mip_mpi {

// What ended the work of all: a sentence that names the rank where it happened.
struct GroupFailure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

class Group {
 public:
  explicit Group(MPI_Comm communicator);

  MPI_Comm communicator() const { return communicator_; }
  int rank() const { return rank_; }
  int size() const { return size_; }
  bool is_root() const { return rank_ == 0; }
  // Of the ranks that share this machine.
  int neighbours() const { return neighbours_; }

  // Every rank does its part, and waits for the others. Where one or more fail by an exception, all
  // throw GroupFailure with the sentence of the lowest of them.
  void together(const std::function<void()>& part) const;

  // The smallest number of all ranks, known to all.
  uint64_t least(uint64_t number) const;

  // The root's text and number, known to all.
  std::string share(std::string text) const;
  void share(void* bytes, size_t count) const;

 private:
  MPI_Comm communicator_;
  int rank_ = 0, size_ = 1, neighbours_ = 1;
};

}  // namespace zox_mip_mpi
