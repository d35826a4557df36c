#include "operations/entries.h"

ZOX_MAXIMA_BYTE_MASK(ZOX_MAXIMUM_ENTRY)
