#include <fcntl.h>
#include <unistd.h>

#include "run.h"

int main(int argc, char** argv) {
  // A stream that the caller has closed must not become a file of ours: it leads nowhere instead.
  for (int stream = 0; stream < 3; ++stream)
    if (fcntl(stream, F_GETFD) < 0 && open("/dev/null", O_RDONLY) < 0) return 1;
  return zox_mip::run(argc, argv);
}
