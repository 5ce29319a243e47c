// Whether this editor can build Nanite Assembly meshes: the builder plugin, the engine version and the renderer.
#pragma once

#include "CoreMinimal.h"

// The engine plugin that provides UNaniteAssemblyStaticMeshBuilder.
extern const TCHAR* const NaniteAssemblyPluginName;

struct FNaniteAssemblyPluginStatus
{
	// The builder can be used: exactly when the plugin is enabled.
	bool bAvailable = false;
	bool bPluginEnabled = false;
	// The renderer honours assembly data (NaniteAssembliesSupported).
	bool bAssembliesSupported = false;
	FString EngineVersion;
	FString Reason;
};

// Asks the platform afresh at every call.
FNaniteAssemblyPluginStatus GetNaniteAssemblyPluginStatus();
