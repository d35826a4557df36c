#include "checks.h"
#include "wrap.h"
#include "zox_volume.h"
#include "zox_volume_names.h"

// The casters' own calls of __zox_Malloc and __zox_Free arrive here as well: they cost a jump and,
// for a free, the look at one word. Where one name of the allocator was replaced behind the checker,
// blocks have whatever form the replacement gives them.
#define ZOX_CHECK_FRAME(prefix)                                                                            \
  ZOX_CHECK_EXPORT const char* prefix##zox_GetStringStatus(int status) {                                   \
    return ZOX_CHECK_NEXT(prefix##zox_GetStringStatus)(status);                                            \
  }                                                                                                        \
  ZOX_CHECK_EXPORT const char* prefix##zox_GetVersion(void) {                                              \
    return ZOX_CHECK_NEXT(prefix##zox_GetVersion)();                                                       \
  }                                                                                                        \
  ZOX_CHECK_EXPORT int prefix##zox_GetNumThreads(int* count) {                                             \
    zox_check::check_get_threads(count);                                                                   \
    return ZOX_CHECK_NEXT(prefix##zox_GetNumThreads)(count);                                               \
  }                                                                                                        \
  ZOX_CHECK_EXPORT int prefix##zox_SetNumThreads(int count) {                                              \
    return ZOX_CHECK_NEXT(prefix##zox_SetNumThreads)(count);                                               \
  }                                                                                                        \
  ZOX_CHECK_EXPORT void* prefix##zox_Malloc(int size) { return ZOX_CHECK_NEXT(prefix##zox_Malloc)(size); } \
  ZOX_CHECK_EXPORT void prefix##zox_Free(void* block) {                                                    \
    if (ZOX_CHECK_NEXT(zox_Free) == ZOX_CHECK_NEXT(__zox_Free)) zox_check::check_free(block);              \
    ZOX_CHECK_NEXT(prefix##zox_Free)(block);                                                               \
  }                                                                                                        \
  ZOX_CHECK_EXPORT void* prefix##zox_AlignPointer(void* pointer, int alignment) {                          \
    zox_check::check_alignment(alignment);                                                                 \
    return ZOX_CHECK_NEXT(prefix##zox_AlignPointer)(pointer, alignment);                                   \
  }

ZOX_CHECK_FRAME()
ZOX_CHECK_FRAME(__)
