#include "operations/entries.h"

ZOX_CASTERS_BPT(ZOX_CASTER_ENTRY)
