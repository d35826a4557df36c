#include "operations/entries.h"

ZOX_CASTERS_BDT(ZOX_CASTER_ENTRY)
