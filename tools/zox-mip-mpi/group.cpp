#include "group.h"

#include <algorithm>
#include <climits>
#include <exception>
#include <new>

namespace zox_mip_mpi {
namespace {

// Why a part of the work failed; empty: it did not.
std::string reason_of(const std::function<void()>& part) {
  try {
    part();
    return {};
  } catch (const std::bad_alloc&) {
    return "There is not enough memory.";
  } catch (const std::exception& error) {
    return *error.what() ? error.what() : "It failed.";
  }
}

}  // namespace

Group::Group(MPI_Comm communicator) : communicator_(communicator) {
  MPI_Comm_rank(communicator_, &rank_);
  MPI_Comm_size(communicator_, &size_);
  MPI_Comm machine;
  MPI_Comm_split_type(communicator_, MPI_COMM_TYPE_SHARED, rank_, MPI_INFO_NULL, &machine);
  MPI_Comm_size(machine, &neighbours_);
  MPI_Comm_free(&machine);
}

uint64_t Group::least(uint64_t number) const {
  MPI_Allreduce(MPI_IN_PLACE, &number, 1, MPI_UINT64_T, MPI_MIN, communicator_);
  return number;
}

void Group::together(const std::function<void()>& part) const {
  const std::string reason = reason_of(part);
  const int mine = reason.empty() ? INT_MAX : rank_;
  int first = INT_MAX;
  MPI_Allreduce(&mine, &first, 1, MPI_INT, MPI_MIN, communicator_);
  if (first == INT_MAX) return;
  std::string sentence = "Rank " + std::to_string(first) + ": " + reason;
  int length = static_cast<int>(sentence.size());
  MPI_Bcast(&length, 1, MPI_INT, first, communicator_);
  sentence.resize(static_cast<size_t>(length));
  MPI_Bcast(sentence.data(), length, MPI_CHAR, first, communicator_);
  throw GroupFailure(sentence);
}

std::string Group::share(std::string text) const {
  uint64_t length = text.size();
  share(&length, sizeof length);
  text.resize(length);
  share(text.data(), length);
  return text;
}

void Group::share(void* bytes, size_t count) const {
  constexpr size_t kMost = 1 << 30;  // a count of MPI is an int
  for (size_t at = 0; at < count; at += kMost)
    MPI_Bcast(static_cast<char*>(bytes) + at, static_cast<int>(std::min(kMost, count - at)), MPI_CHAR, 0,
              communicator_);
}

}  // namespace zox_mip_mpi
