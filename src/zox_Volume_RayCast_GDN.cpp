#include "operations/entries.h"

ZOX_CASTERS_GDN(ZOX_CASTER_ENTRY)
