#pragma once

#include "Modules/ModuleInterface.h"

// Registers the Nanite Assembly extension and its Lua binding with the host at start-up and withdraws
// them at shut-down. It keeps no state of its own.
class FNaniteAssemblyIntegrationModule : public IModuleInterface
{
public:
	virtual void StartupModule() override;
	virtual void ShutdownModule() override;
};
