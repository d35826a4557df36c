#include "export.h"

// The identity of the kernels. A row of fields: tag, version, build date, platform, source control.
#define ZOX_TEXT(number) ZOX_TEXT_(number)
#define ZOX_TEXT_(number) #number
#define ZOX_IDENTITY "ZOX:" ZOX_TEXT(ZOX_VOLUME_VERSION) ":20240723:linux-x8664:svn:"

const char zoxid[] = "@(#)" ZOX_IDENTITY;
static_assert(sizeof zoxid == 39, "the version has four digits");

// An array, not a literal: the linker merges literals, and would let this one point into the
// tail of zoxid.
static const char version_text[] = ZOX_IDENTITY;

const char* zox_GetVersion(void) { return version_text; }

ZOX_SECOND_NAME(zox_GetVersion);
