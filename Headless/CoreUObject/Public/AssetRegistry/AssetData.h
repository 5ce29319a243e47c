// FAssetData: what the asset registry knows about one asset.
#pragma once

#include "UObject/NameTypes.h"
#include "UObject/SoftObjectPath.h"
#include "UObject/TopLevelAssetPath.h"

class UObject;

struct FAssetData
{
	FName PackageName;
	FName PackagePath;
	FName AssetName;
	FTopLevelAssetPath AssetClassPath;

	FAssetData() = default;
	COREUOBJECT_API FAssetData(FName InPackageName, FName InPackagePath, FName InAssetName, FTopLevelAssetPath InAssetClassPath);
	COREUOBJECT_API explicit FAssetData(const UObject* InAsset);

	[[nodiscard]] bool IsValid() const { return !PackageName.IsNone() && !AssetName.IsNone(); }
	[[nodiscard]] COREUOBJECT_API FSoftObjectPath GetSoftObjectPath() const;
	[[nodiscard]] COREUOBJECT_API FString GetObjectPathString() const;
	[[nodiscard]] COREUOBJECT_API UObject* GetAsset() const;
	[[nodiscard]] bool IsAssetLoaded() const { return GetSoftObjectPath().ResolveObject() != nullptr; }
};
