#include "operations/entries.h"

ZOX_MAXIMA_PLAIN(ZOX_MAXIMUM_ENTRY)
