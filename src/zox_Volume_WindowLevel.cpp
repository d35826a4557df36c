#include "operations/entries.h"

ZOX_WINDOW_LEVELS(ZOX_WINDOW_LEVEL_ENTRY)
