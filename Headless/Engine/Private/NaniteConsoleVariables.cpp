// The Nanite console variables that the engine module registers; the renderer's NaniteAssembliesSupported
// (RenderCore) reads the first two by name.
#include "HAL/IConsoleManager.h"

static TAutoConsoleVariable<int32> CVarNaniteFoliage(TEXT("r.Nanite.Foliage"), 0, TEXT("Whether to enable support for Nanite Foliage"),
	ECVF_ReadOnly | ECVF_RenderThreadSafe);

static TAutoConsoleVariable<int32> CVarNaniteAllowAssemblies(TEXT("r.Nanite.AllowAssemblies"), 0, TEXT("Whether to enable support for Nanite Assemblies"),
	ECVF_ReadOnly | ECVF_RenderThreadSafe);

static TAutoConsoleVariable<int32> CVarNaniteForceEnableMeshes(TEXT("r.Nanite.ForceEnableMeshes"), 0,
	TEXT("Force enables all static meshes to also build Nanite data."), ECVF_ReadOnly | ECVF_RenderThreadSafe);
