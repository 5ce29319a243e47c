// Whether this editor can build Nanite Assembly meshes: the builder plugin, the engine version and the renderer.
#pragma once

#include "CoreMinimal.h"

namespace CVAI::NaniteAssembly
{
	// The engine plugin that provides UNaniteAssemblyStaticMeshBuilder.
	inline constexpr const TCHAR* NaniteAssemblyPluginName = TEXT("NaniteAssemblyEditorUtils");

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
	[[nodiscard]] FNaniteAssemblyPluginStatus GetNaniteAssemblyPluginStatus();
}
