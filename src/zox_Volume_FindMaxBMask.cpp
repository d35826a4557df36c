#include "operations/entries.h"

ZOX_MAXIMA_BIT_MASK(ZOX_MAXIMUM_ENTRY)
