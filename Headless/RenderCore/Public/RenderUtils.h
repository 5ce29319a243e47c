#pragma once

#include "HAL/Platform.h"

// True when the renderer uses Nanite Assembly data: r.Nanite.Foliage or r.Nanite.AllowAssemblies is
// non-zero. The engine reads both once at start-up; this build reads them at every call so that a
// project setting changed by the harness shows at once.
RENDERCORE_API bool NaniteAssembliesSupported();
