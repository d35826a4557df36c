#include "operations/entries.h"

ZOX_CASTERS_BPN(ZOX_CASTER_ENTRY)
