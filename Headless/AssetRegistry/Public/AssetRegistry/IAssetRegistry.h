// The asset registry: what assets exist, on disk and in memory.
#pragma once

#include "CoreMinimal.h"
#include "UObject/SoftObjectPath.h"

// As in the engine's header, only declared: a caller that looks at the asset data includes its header.
struct FAssetData;
class UObject;

class IAssetRegistry
{
public:
	virtual ~IAssetRegistry() = default;

	// Null while the registry is not loaded.
	static ASSETREGISTRY_API IAssetRegistry* Get();
	static ASSETREGISTRY_API IAssetRegistry& GetChecked();

	// An in-memory object is found by its path whether or not AssetCreated was called; otherwise the
	// packages on disk are searched.
	virtual FAssetData GetAssetByObjectPath(const FSoftObjectPath& ObjectPath, bool bIncludeOnlyOnDiskAssets = false, bool bSkipARFilteredAssets = true) const = 0;
	virtual void AssetCreated(UObject* NewAsset) = 0;
};
