#include "RenderUtils.h"

#include "HAL/IConsoleManager.h"

// The engine registers both variables (Engine module) and reads them once into function statics; here they
// are looked up at every call so that a project setting changed by the harness shows at once.
bool NaniteAssembliesSupported()
{
	const IConsoleVariable* Foliage = IConsoleManager::Get().FindConsoleVariable(TEXT("r.Nanite.Foliage"));
	const IConsoleVariable* AllowAssemblies = IConsoleManager::Get().FindConsoleVariable(TEXT("r.Nanite.AllowAssemblies"));
	return (Foliage && Foliage->GetInt() != 0) || (AllowAssemblies && AllowAssemblies->GetInt() != 0);
}
