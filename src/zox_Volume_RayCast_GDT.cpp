#include "operations/entries.h"

ZOX_CASTERS_GDT(ZOX_CASTER_ENTRY)
