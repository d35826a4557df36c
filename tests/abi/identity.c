// What the loaded library says of itself, through the built file: the version text is not the tail
// of zoxid (a linker may merge the two), and the texts and the setting are what they must be.
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "zox_volume.h"
#include "zox_volume_names.h"

static int failed;

static void expect(int holds, const char* what) {
  if (holds) return;
  printf("does not hold: %s\n", what);
  failed = 1;
}

int main(void) {
  const char* version = zox_GetVersion();
  expect(strcmp(version, "ZOX:1100:20240723:linux-x8664:svn:") == 0, "text of zox_GetVersion");
  expect(memcmp(zoxid, "@(#)ZOX:1100:20240723:linux-x8664:svn:", 39) == 0, "bytes of zoxid");
  uintptr_t distance = (uintptr_t)version - (uintptr_t)zoxid;
  expect(distance >= sizeof zoxid, "version text outside zoxid");
  expect(version == __zox_GetVersion(), "one version text under both names");

  int count = 0;
  expect(zox_nthreads == -1, "zox_nthreads is -1 when loaded");
  expect(__zox_SetNumThreads(7) == 0 && zox_nthreads == 7, "second name stores to zox_nthreads");
  expect(zox_GetNumThreads(&count) == 0 && count == 7, "first name reads what the second stored");
  return failed;
}
