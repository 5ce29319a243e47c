// Harness-only: what the editor around the asset registry tells it, and what a test may change of it.
#pragma once

#include "Containers/UnrealString.h"

namespace UE::Headless
{
	// A save tells the registry that the package's file changed.
	ASSETREGISTRY_API void NotePackageOnDisk(const FString& PackageName);

	// Makes IAssetRegistry::Get() answer null (or the registry again).
	ASSETREGISTRY_API void SetAssetRegistryAvailable(bool bAvailable);
}
