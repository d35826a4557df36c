#include "export.h"

const char zoxid[39] = "@(#)ZOX:1100:20240723:linux-x8664:svn:";

// An array, not a literal: the linker merges literals, and would let this one point into the
// tail of zoxid.
static const char version_text[] = "ZOX:1100:20240723:linux-x8664:svn:";

const char* zox_GetVersion(void) { return version_text; }

ZOX_SECOND_NAME(zox_GetVersion);
