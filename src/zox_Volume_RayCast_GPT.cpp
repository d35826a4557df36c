#include "operations/entries.h"

ZOX_CASTERS_GPT(ZOX_CASTER_ENTRY)
