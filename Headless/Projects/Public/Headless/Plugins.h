// Harness-only: the project's plugin list as the plugin manager reads it.
#pragma once

#include "Containers/UnrealString.h"

namespace UE::Headless
{
	// Reads the "Plugins" list of a .uproject file: each {"Name": ..., "Enabled": ...} entry overrides the
	// plugin's default. False (with the reason) when the file cannot be read or parsed.
	PROJECTS_API bool LoadProjectPlugins(const FString& UProjectPath, FString& OutError);

	// Enables or disables a plugin for this run, as editing the project's plugin list would.
	PROJECTS_API void SetPluginEnabled(const FString& Name, bool bEnabled);
}
