#include "endings.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstring>

namespace zox_mip_mpi {
namespace {

constexpr int kFailed = 1;

// The first of the arguments is the communicator.
void end_at_error(MPI_Comm* communicator, int* error, ...) {
  char text[MPI_MAX_ERROR_STRING] = "";
  int length = 0, rank = 0;
  MPI_Error_string(*error, text, &length);
  MPI_Comm_rank(*communicator, &rank);
  std::fprintf(stderr, "zox-mip-mpi: Rank %d: MPI failed: %s.\n", rank, text);
  MPI_Abort(MPI_COMM_WORLD, kFailed);
}

// Voxels are seen where they lie: if a file is cut, or its storage fails, the system says so by a signal.
char lost_file[96];
void end_at_lost_file(int) {
  if (write(STDERR_FILENO, lost_file, std::strlen(lost_file)) < 0) _exit(kFailed);
  _exit(kFailed);
}

}  // namespace

int abandon(const Group& group, const std::string& reason) {
  std::fprintf(stderr, "zox-mip-mpi: Rank %d: %s\n", group.rank(), reason.c_str());
  std::fflush(nullptr);
  return MPI_Abort(group.communicator(), kFailed);
}

void watch(const Group& group) {
  MPI_Errhandler handler;
  MPI_Comm_create_errhandler(end_at_error, &handler);
  MPI_Comm_set_errhandler(group.communicator(), handler);
  MPI_Errhandler_free(&handler);
  std::snprintf(lost_file, sizeof lost_file,
                "zox-mip-mpi: Rank %d: The voxel file was cut short, or its storage failed.\n", group.rank());
  std::signal(SIGBUS, end_at_lost_file);
}

}  // namespace zox_mip_mpi
