#pragma once

#include "AssetRegistry/IAssetRegistry.h"

class FAssetRegistryModule
{
public:
	static void AssetCreated(UObject* NewAsset) { IAssetRegistry::GetChecked().AssetCreated(NewAsset); }
	static IAssetRegistry& GetRegistry() { return IAssetRegistry::GetChecked(); }
};
