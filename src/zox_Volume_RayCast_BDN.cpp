#include "operations/entries.h"

ZOX_CASTERS_BDN(ZOX_CASTER_ENTRY)
