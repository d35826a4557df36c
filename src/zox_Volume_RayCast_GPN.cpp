#include "operations/entries.h"

ZOX_CASTERS_GPN(ZOX_CASTER_ENTRY)
